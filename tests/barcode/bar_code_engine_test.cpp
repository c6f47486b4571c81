// The engine's own rules where zint is lenient, its fall-back drawing, and
// the library without any engine.
#include <cstdlib>
#include <cstring>
#include <string>

#include "barcode/bar_code_test_support.h"
#include "nvk/platform/bar_code_record.h"

namespace nvk::os {
namespace {

using test::BarCodeProbe;
using test::Image;

TEST(Engine, RefusesWhatTheTypeDoesNotTake) {
    EBarCode barCode;
    ASSERT_TRUE(barCode.IsInstalled());
    const DWORD check = EBarCode::FlagCheckDigit;
    struct Case {
        const char* text;
        EBarCode::eType type;
        DWORD flags;
        bool valid;
    };
    const Case cases[] = {
        {"96385074", EBarCode::TypeEAN8, 0, true},
        {"96385075", EBarCode::TypeEAN8, 0, false},       // wrong check digit
        {"12345670", EBarCode::TypeEAN8, check, false},   // would become an EAN-13
        {"123456789012", EBarCode::TypeEAN13, 0, false},  // its check digit is missing
        {"123456789012", EBarCode::TypeEAN13, check, true},
        {"12345678901a", EBarCode::TypeEAN13, check, false},
        {"ABC-$/+%. 09", EBarCode::TypeUpper, 0, true},
        {"abc", EBarCode::TypeUpper, 0, false},  // no upper-casing
        {"AbC", EBarCode::TypeMixed9, check, true},
        {"AbC\x7f", EBarCode::TypeMixed10, 0, true},
        {"caf\xe9", EBarCode::TypeMixed18, 0, false},
        {"", EBarCode::TypeMixed18, 0, false},
        {"1234567", EBarCode::TypeAuto, check, true},
        {"caf\xe9", EBarCode::TypeAuto, 0, false},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(barCode.IsValidText(one.text, one.type, one.flags), one.valid) << one.text;
    }
    EXPECT_TRUE(barCode.IsValidText(std::string(85, 'A').c_str(), EBarCode::TypeUpper, 0));
    EXPECT_FALSE(barCode.IsValidText(std::string(86, 'A').c_str(), EBarCode::TypeUpper, 0));
    // A text far past the record's 192 bytes is refused, and harms nothing.
    EXPECT_FALSE(barCode.IsValidText(std::string(1000, 'A').c_str(), EBarCode::TypeUpper, 0));
}

TEST(Engine, EntryPointsAnswerByTheRecord) {
    BarCodeProbe barCode;
    BARCODERECORD record{};
    EXPECT_EQ(barCode.BarInfo(18, &record), 0);
    EXPECT_STREQ(record.text, "Code 128");
    EXPECT_EQ(barCode.BarInfo(3, &record), 1);
    record = BARCODERECORD{};
    record.type = 1;
    record.checkDigit = 1;
    std::strcpy(record.text, "1234567");
    RECT rect{0, 0, 1, 1};
    EXPECT_EQ(barCode.BarCodef(&rect, nullptr, &record, nullptr), 0);
    EXPECT_GT(rect.right, 67);  // 67 modules and the quiet zones
    Image image(300, 100);
    RECT target{0, 0, 300, 100};
    record.barColour = RGB(0, 0, 200);
    record.backgroundColour = 0xFFFFFF;
    EXPECT_EQ(barCode.BarCodeh(image, &target, nullptr, &record, nullptr), 0);
    EXPECT_GT(image.Count(RGB(0, 0, 200)), 300 * 100 / 5);
    record.type = 77;
    EXPECT_EQ(barCode.BarCodeh(image, &target, nullptr, &record, nullptr), 1);
    EXPECT_EQ(record.status, 1);
}

TEST(Engine, RefusedTextsDrawTheCrossedFrame) {
    EBarCode barCode;
    Image image(300, 120);
    RECT rect{10, 10, 290, 110};
    EXPECT_FALSE(barCode.DrawBarCode(image, &rect, "abc", EBarCode::TypeUpper,
                                     EBarCode::FlagShowText, RGB(200, 0, 0)));
    EXPECT_TRUE(image.Crossed(rect, RGB(200, 0, 0)));
    EXPECT_FALSE(barCode.IsValidText("abc", EBarCode::TypeUpper, 0));
}

// Run by the test "barcode.missing_engine", where no engine can be found.
TEST(MissingEngine, LeavesTheCrossedFrameInPlace) {
    if (std::getenv("NVK_BARCODE_ENGINE_ABSENT") == nullptr) {
        GTEST_SKIP() << "the engine is installed here";
    }
    BarCodeProbe barCode;
    EXPECT_FALSE(barCode.IsInstalled());
    Image image(300, 120);
    RECT rect{10, 10, 290, 110};
    EXPECT_FALSE(barCode.DrawBarCode(image, &rect, "ABC", EBarCode::TypeUpper, 0, 0));
    EXPECT_TRUE(image.Crossed(rect, 0));
    EXPECT_FALSE(barCode.DrawSampleBarCode(image, &rect, EBarCode::TypeEAN13, 0, 0));
    EXPECT_FALSE(barCode.IsValidText("ABC", EBarCode::TypeUpper, 0));
    BARCODERECORD record{};
    EXPECT_EQ(barCode.BarCodeh(image, &rect, nullptr, &record, nullptr), -1);
    EXPECT_EQ(record.status, -1);
    HENHMETAFILE metafile = nullptr;
    EXPECT_EQ(barCode.BarCodemx(image, &rect, nullptr, &record, &metafile, nullptr), nullptr);
    EXPECT_EQ(barCode.BarInfo(0, &record), -1);
}

}  // namespace
}  // namespace nvk::os
