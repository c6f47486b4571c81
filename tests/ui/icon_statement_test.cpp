#include <gtest/gtest.h>

#include <string>

#include "rc_model.h"
#include "rc_parser.h"

namespace {

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

}  // namespace
