#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "nvk/platform/comctl_version.h"
#include "nvk/platform/resource_index.h"
#include "os/api/error.h"
#include "os/api/pointer_check.h"
#include "os/api/resource_names.h"
#include "rc_model.h"
#include "rc_parser.h"

namespace nvk::test {
extern const os::ResourceTable IconResources;
}

namespace {

using namespace nvk::os;

class IconsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { RegisterResourceTable(Module(), &nvk::test::IconResources); }
    static void TearDownTestSuite() { UnregisterResourceTable(&nvk::test::IconResources); }
    static HMODULE Module() { return reinterpret_cast<HMODULE>(0x7E57); }
};

BOOL Collect(HMODULE, LPCSTR, LPSTR name, LONG_PTR param) {
    auto& out = *reinterpret_cast<std::string*>(param);
    out += IS_INTRESOURCE(name) ? std::to_string(reinterpret_cast<ULONG_PTR>(name))
                                : std::string(name);
    out += ' ';
    return TRUE;
}

TEST_F(IconsTest, GroupsAndImagesInDirectoryOrder) {
    std::string groups;
    EXPECT_TRUE(
        EnumResourceNamesA(Module(), RT_GROUP_ICON, Collect, reinterpret_cast<LONG_PTR>(&groups)));
    EXPECT_EQ(groups, "AAA ZAPP 100 200 ");
    std::string images;
    EXPECT_TRUE(
        EnumResourceNamesA(Module(), RT_ICON, Collect, reinterpret_cast<LONG_PTR>(&images)));
    EXPECT_EQ(images, "1 2 3 4 5 6 7 8 ");
    EXPECT_FALSE(EnumResourceNamesA(Module(), RT_RCDATA, Collect, 0));
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_TYPE_NOT_FOUND);

    // A group lists its images: 6 bytes of header, then 14 for each image
    // ending with the image's number.
    HRSRC group = FindResourceA(Module(), MAKEINTRESOURCEA(100), RT_GROUP_ICON);
    ASSERT_NE(group, nullptr);
    ASSERT_EQ(SizeofResource(Module(), group), 6u + 2 * 14);
    const auto* bytes =
        static_cast<const unsigned char*>(LockResource(LoadResource(Module(), group)));
    EXPECT_EQ(bytes[4], 2);
    EXPECT_EQ(bytes[6], 1);   // width of the first image
    EXPECT_EQ(bytes[20], 2);  // width of the second
    const int firstImage = bytes[18];
    HRSRC image = FindResourceA(Module(), MAKEINTRESOURCEA(firstImage), RT_ICON);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(SizeofResource(Module(), image), 40u + 4 + 4);
}

TEST_F(IconsTest, IndicesOfGroupsThenImages) {
    EXPECT_EQ(FindResourceIndex(Module(), RT_GROUP_ICON, "AAA"), 0);
    EXPECT_EQ(FindResourceIndex(Module(), RT_GROUP_ICON, "Aaa"), -1);
    EXPECT_EQ(FindResourceIndex(Module(), RT_GROUP_ICON, MAKEINTRESOURCEA(200)), 3);
    EXPECT_EQ(FindIconIndex(Module(), 100), 2);
    EXPECT_EQ(FindIconIndex(Module(), 0x10000 | 200), 3);
    EXPECT_EQ(FindIconIndex(Module(), 5), 4);
    EXPECT_EQ(FindIconIndex(Module(), 999), -1);
}

TEST(IconStatement, RefusesWhatIsNoIconFile) {
    const std::string script = std::string(NVK_TEST_ICONS) + "/icons.rc";
    nvk::rc::Script parsed;
    EXPECT_THROW(nvk::rc::Parse("1 ICON \"missing.ico\"", script, parsed), nvk::rc::RcError);
    EXPECT_THROW(nvk::rc::Parse("1 ICON \"icons.rc\"", script, parsed), nvk::rc::RcError);
    EXPECT_THROW(nvk::rc::Parse("1 ICON BEGIN END", script, parsed), nvk::rc::RcError);
    // One group per language, each with images of its own.
    nvk::rc::Parse("1 ICON \"two_images.ico\"\nLANGUAGE 12, 1\n1 ICON \"two_images.ico\"", script,
                   parsed);
    EXPECT_EQ(parsed.data.size(), 6u);
    EXPECT_EQ(parsed.data[4].name.number, 4);
    EXPECT_THROW(nvk::rc::Parse("1 ICON \"two_images.ico\"", script, parsed), nvk::rc::RcError);
}

TEST(ComCtlVersion, NoLibraryOnThisSystem) {
    DWORD major = 0;
    DWORD minor = 0;
    EXPECT_EQ(GetComCtlVersion(&major, nullptr), E_INVALIDARG);
    EXPECT_EQ(GetComCtlVersion(reinterpret_cast<DWORD*>(const_cast<char*>("text")), &minor),
              E_INVALIDARG);
    EXPECT_EQ(GetComCtlVersion(&major, &minor), E_FAIL);

    char local[8];
    EXPECT_FALSE(IsBadWritePtr(local, sizeof local));
    EXPECT_FALSE(IsBadWritePtr(nullptr, 0));
    EXPECT_TRUE(IsBadWritePtr(nullptr, 1));
    EXPECT_TRUE(IsBadWritePtr(reinterpret_cast<LPVOID>(&Collect), 1));
}

}  // namespace
