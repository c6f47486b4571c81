#include <gtest/gtest.h>

#include "nvk/context/string_load.h"
#include "os/api/module.h"
#include "os/api/resource.h"

namespace {

TEST(SkinModule, ALoadedModuleIsAskedForTheTableItExports) {
    nvk::os::HMODULE skin = nvk::os::LoadLibraryA("nvktestskin.skn");
    ASSERT_NE(skin, nullptr);
    Chaine value;
    EXPECT_TRUE(nvk::LoadStringIn(value, 14014, skin, 2055));
    EXPECT_STREQ(value.c_str(), "Die Datei %s gibt es schon. Weiterfahren?");
    // The skin has no French: the search gives what it has.
    EXPECT_TRUE(nvk::LoadStringIn(value, 14014, skin, 1036));
    EXPECT_STREQ(value.c_str(), "Die Datei %s gibt es schon. Weiterfahren?");
    EXPECT_FALSE(nvk::LoadStringIn(value, 14013, skin, 2055));
    EXPECT_TRUE(nvk::os::FreeLibrary(skin));
}

}  // namespace

namespace {

// nvkrc --register: the table joins the resources of the module that holds
// it, beside any other table of that module, and leaves with the module.
TEST(RegisteredTable, JoinsTheResourcesOfItsModule) {
    Chaine value;
    EXPECT_TRUE(value.LoadString(30001));
    EXPECT_STREQ(value.c_str(), "the program's own");
    EXPECT_TRUE(value.LoadString(14013));  // the library's, under the same module

    nvk::os::HMODULE module = nvk::os::LoadLibraryA("nvktestregistered.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(nvk::LoadStringIn(value, 30001, module, 0));
    EXPECT_STREQ(value.c_str(), "the module's own");
    EXPECT_TRUE(nvk::LoadStringIn(value, 30002, module, 0));
    EXPECT_FALSE(nvk::LoadStringIn(value, 30002, nullptr, 0));  // not the program's
    EXPECT_TRUE(nvk::os::FreeLibrary(module));
    EXPECT_TRUE(value.LoadString(30001));
    EXPECT_STREQ(value.c_str(), "the program's own");
}

}  // namespace
