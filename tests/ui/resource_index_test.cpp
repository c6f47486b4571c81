#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "nvk/platform/comctl_version.h"
#include "nvk/platform/resource_index.h"
#include "os/api/error.h"
#include "os/api/module.h"
#include "os/api/pointer_check.h"
#include "os/api/resource_names.h"

namespace {

using namespace nvk::os;

// The icons are the program's own resources: a null module names it.
HMODULE Module() {
    return nullptr;
}

BOOL Collect(HMODULE, LPCSTR, LPSTR name, LONG_PTR param) {
    auto& out = *reinterpret_cast<std::string*>(param);
    out += IS_INTRESOURCE(name) ? std::to_string(reinterpret_cast<ULONG_PTR>(name))
                                : std::string(name);
    out += ' ';
    return TRUE;
}

TEST(Icons, GroupsAndImagesInDirectoryOrder) {
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

TEST(Icons, IndicesOfGroupsThenImages) {
    EXPECT_EQ(FindResourceIndex(Module(), RT_GROUP_ICON, "AAA"), 0);
    EXPECT_EQ(FindResourceIndex(Module(), RT_GROUP_ICON, "Aaa"), -1);
    EXPECT_EQ(FindResourceIndex(Module(), RT_GROUP_ICON, MAKEINTRESOURCEA(200)), 3);
    EXPECT_EQ(FindIconIndex(Module(), 100), 2);
    EXPECT_EQ(FindIconIndex(Module(), 0x10000 | 200), 3);
    EXPECT_EQ(FindIconIndex(Module(), 5), 4);
    EXPECT_EQ(FindIconIndex(Module(), 999), -1);
}

TEST(ComCtlVersion, TheSystemsLibraryOrAFailure) {
    DWORD major = 0;
    DWORD minor = 0;
    EXPECT_EQ(GetComCtlVersion(&major, nullptr), E_INVALIDARG);
    EXPECT_EQ(GetComCtlVersion(reinterpret_cast<DWORD*>(const_cast<char*>("text")), &minor),
              E_INVALIDARG);
    // A system without the common controls' library fails; one with it
    // gives a version of at least 4.0, the first that had the library.
    HMODULE library = LoadLibraryA("comctl32.dll");
    if (library == nullptr) {
        EXPECT_EQ(GetComCtlVersion(&major, &minor), E_FAIL);
    } else {
        EXPECT_EQ(GetComCtlVersion(&major, &minor), S_OK);
        EXPECT_GE(major, 4u);
        FreeLibrary(library);
    }

    char local[8];
    EXPECT_FALSE(IsBadWritePtr(local, sizeof local));
    EXPECT_FALSE(IsBadWritePtr(nullptr, 0));
    EXPECT_TRUE(IsBadWritePtr(nullptr, 1));
    EXPECT_TRUE(IsBadWritePtr(reinterpret_cast<LPVOID>(&Collect), 1));
}

}  // namespace
