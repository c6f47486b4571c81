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
