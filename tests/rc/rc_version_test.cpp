#include <gtest/gtest.h>

#include <string>

#include "rc_parser.h"
#include "rc_version.h"

namespace nvk::rc {
namespace {

std::string Error(const std::string& text) {
    Script script;
    try {
        Parse(text, "v.rc", script);
    } catch (const RcError& e) {
        return e.what();
    }
    return "no error";
}

TEST(RcVersion, FieldsAndValues) {
    Script script;
    Parse(
        "1 VERSIONINFO FILEVERSION 1,2 PRODUCTVERSION 0x10,0,0,65535 FILEOS 0x40004L\n"
        "BEGIN BLOCK \"A\" BEGIN VALUE \"T\", \"x\" \"y\" VALUE \"N\", 1, 2L END END\n",
        "v.rc", script);
    ASSERT_EQ(script.versions.size(), 1u);
    const VersionInfo& version = script.versions[0];
    EXPECT_EQ(version.fileVersion[0], 0x00010002u);
    EXPECT_EQ(version.fileVersion[1], 0u);
    EXPECT_EQ(version.productVersion[0], 0x00100000u);
    EXPECT_EQ(version.productVersion[1], 0xFFFFu);
    EXPECT_EQ(version.os, 0x40004u);
    ASSERT_EQ(version.children.size(), 1u);
    ASSERT_EQ(version.children[0].children.size(), 2u);
    EXPECT_EQ(version.children[0].children[0].textValue, u"xy");
    EXPECT_EQ(version.children[0].children[1].binary,
              (std::vector<unsigned char>{1, 0, 2, 0, 0, 0}));
    // The root's length covers the whole tree, the last child included.
    const std::vector<unsigned char> bytes = VersionBytes(version);
    EXPECT_EQ(bytes[0] | (bytes[1] << 8), static_cast<int>(bytes.size()));
}

TEST(RcVersion, RefusesWhatItCannotLayOut) {
    EXPECT_NE(Error("1 VERSIONINFO FILEVERSION 1,65536 BEGIN END").find("v.rc:1:"),
              std::string::npos);
    EXPECT_NE(Error("1 VERSIONINFO FILEFLAGS 1|2 BEGIN END").find("unexpected character"),
              std::string::npos);
    EXPECT_NE(Error("1 VERSIONINFO COLOR 1 BEGIN END").find("unknown VERSIONINFO field"),
              std::string::npos);
    EXPECT_NE(Error("1 VERSIONINFO BEGIN VALUE \"k\", \"a\", 1 END").find("either text"),
              std::string::npos);
    EXPECT_NE(Error("1 VERSIONINFO BEGIN VALUE \"k\", 70000 END").find("16-bit"),
              std::string::npos);
    EXPECT_NE(Error("1 VERSIONINFO BEGIN END\n2 VERSIONINFO BEGIN END").find("one VERSIONINFO"),
              std::string::npos);
    EXPECT_NE(Error("1 VERSIONINFO BEGIN STRING \"k\" END").find("BLOCK, VALUE or END"),
              std::string::npos);
}

}  // namespace
}  // namespace nvk::rc
