// EBarCode against a spy engine: the record it fills, the text it prepares,
// the rotation codes, when it calls the engine and what it draws.
#include <cstring>
#include <string>

#include "barcode/bar_code_test_support.h"
#include "barcode/spy/spy_engine.h"
#include "nvk/platform/bar_code_record.h"
#include "os/api/module.h"
#include "platform/bar_code_rotation.h"

namespace nvk::os {
namespace {

using nvk::CheckingRotation;
using nvk::DrawingRotation;

using test::BarCodeProbe;
using test::Image;

class Contract : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_barCode.IsInstalled());
        auto last = reinterpret_cast<SpyLastCallProc>(
            GetProcAddress(GetModuleHandleA("Dlsbar32.dll"), "SpyLastCall"));
        ASSERT_NE(last, nullptr) << "the spy engine is not the one loaded";
        m_call = last();
        std::memset(m_call, 0, sizeof *m_call);
    }
    const BARCODERECORD& Record() const {
        return *reinterpret_cast<const BARCODERECORD*>(m_call->record);
    }
    std::string Text() const { return Record().text; }

    BarCodeProbe m_barCode;
    SpyCall* m_call = nullptr;
    RECT m_rect{10, 20, 154, 92};
};

TEST_F(Contract, FillsTheRecordAndTheFontForTheLibrary) {
    Image image(200, 120);
    ASSERT_TRUE(m_barCode.DrawBarCode(image, &m_rect, "ABC", EBarCode::TypeUpper,
                                      EBarCode::FlagShowText | EBarCode::FlagCheckDigit,
                                      RGB(1, 2, 3)));
    EXPECT_STREQ(m_call->entry, "BarCodemx");
    EXPECT_EQ(m_call->module, m_barCode.m_hDll);
    const BARCODERECORD& record = Record();
    EXPECT_EQ(record.type, 8);
    EXPECT_EQ(record.showText, 1);
    EXPECT_EQ(record.checkDigit, 1);
    EXPECT_EQ(record.barColour, RGB(1, 2, 3));
    EXPECT_EQ(record.backgroundColour, 0xFFFFFFu);
    EXPECT_EQ(record.constant, 4);
    EXPECT_STREQ(m_call->options, "000");
    // 144 x 72 becomes 2540 x 1270; the font is negated and upright.
    EXPECT_EQ(m_call->rect.left, 0);
    EXPECT_EQ(m_call->rect.right, 2540);
    EXPECT_EQ(m_call->rect.bottom, 1270);
    EXPECT_EQ(m_call->font.lfHeight, 14);
    EXPECT_EQ(m_call->font.lfWidth, -3);
    const std::pair<EBarCode::eType, int> types[] = {
        {EBarCode::TypeEAN8, 1},   {EBarCode::TypeEAN13, 0},    {EBarCode::TypeMixed18, 18},
        {EBarCode::TypeMixed9, 9}, {EBarCode::TypeMixed10, 10},
    };
    for (auto [type, number] : types) {
        m_barCode.DrawBarCode(image, &m_rect, "1", type, 0, 0);
        EXPECT_EQ(Record().type, number) << type;
        EXPECT_EQ(Record().showText, 0);
    }
}

TEST_F(Contract, DrawsTheMetafileOnTheRectangleAndCrossesItOutOnRequest) {
    Image image(200, 120);
    ASSERT_TRUE(m_barCode.DrawBarCode(image, &m_rect, "ABC", EBarCode::TypeUpper, 0, 0));
    EXPECT_EQ(GetPixel(image, m_rect.left, m_rect.top), 0u);
    EXPECT_EQ(GetPixel(image, m_rect.right - 1, m_rect.bottom - 1), 0u);
    EXPECT_EQ(GetPixel(image, m_rect.left - 1, m_rect.top), 0xFFFFFFu);
    EXPECT_EQ(GetPixel(image, m_rect.right, m_rect.bottom), 0xFFFFFFu);
    EXPECT_EQ(image.Count(0), 144 * 72);
    ASSERT_TRUE(m_barCode.DrawBarCode(image, &m_rect, "ABC", EBarCode::TypeUpper,
                                      EBarCode::FlagCrossOut, 0));
    EXPECT_TRUE(image.Crossed(m_rect, RGB(255, 255, 0)));
    // Marks of a tenth of the height, inside the rectangle.
    EXPECT_EQ(GetPixel(image, m_rect.left, m_rect.top), 0u);
    EXPECT_EQ(GetCurrentObject(image, OBJ_PEN), GetStockObject(BLACK_PEN));
}

TEST_F(Contract, RefusedTextsAndTheAutoTypeGiveTheCrossedFrame) {
    for (const char* text : {"refuse", "late"}) {
        Image image(200, 120);
        POINT at{};
        MoveToEx(image, 3, 4, nullptr);
        EXPECT_FALSE(
            m_barCode.DrawBarCode(image, &m_rect, text, EBarCode::TypeUpper, 0, RGB(0, 0, 255)));
        EXPECT_TRUE(image.Crossed(m_rect, RGB(0, 0, 255))) << text;
        EXPECT_EQ(image.Count(0), 0) << text;
        MoveToEx(image, 0, 0, &at);
        EXPECT_EQ(at.x, 3);
    }
    // The automatic type never goes to the library from DrawBarCode; the
    // frame carries the text when asked.
    m_call->calls = 0;
    Image image(200, 120);
    EXPECT_FALSE(m_barCode.DrawBarCode(image, &m_rect, "ABC", EBarCode::TypeAuto,
                                       EBarCode::FlagShowText, RGB(255, 0, 0)));
    EXPECT_EQ(m_call->calls, 0);
    EXPECT_TRUE(image.Crossed(m_rect, RGB(255, 0, 0)));
    RECT centre{62, 46, 102, 66};
    EXPECT_GT(image.Others(centre, 0xFFFFFF, RGB(255, 0, 0)), 10);  // the text
    // TypeNone draws nothing at all.
    Image blank(200, 120);
    EXPECT_FALSE(m_barCode.DrawBarCode(blank, &m_rect, "ABC", EBarCode::TypeNone, 0, 0));
    EXPECT_FALSE(m_barCode.DrawSampleBarCode(blank, &m_rect, EBarCode::TypeNone, 0, 0));
    EXPECT_FALSE(m_barCode.IsValidText("ABC", EBarCode::TypeNone, 0));
    EXPECT_TRUE(blank.Blank());
    EXPECT_EQ(m_call->calls, 0);
    // IsValidText asks the library even for the automatic type.
    EXPECT_TRUE(m_barCode.IsValidText("ABC", EBarCode::TypeAuto, 0));
    EXPECT_EQ(Record().type, -2);
    EXPECT_FALSE(m_barCode.IsValidText("refuse", EBarCode::TypeUpper, 0));
    EXPECT_FALSE(m_barCode.IsValidText("late", EBarCode::TypeUpper, 0));
}

TEST_F(Contract, NormalizingPadsEanTextsOnly) {
    Image image(200, 120);
    struct Case {
        EBarCode::eType type;
        const char* text;
        DWORD flags;
        const char* prepared;
    };
    const DWORD n = EBarCode::FlagNormalize, c = EBarCode::FlagCheckDigit;
    const Case cases[] = {
        {EBarCode::TypeEAN8, "12-34", n, "00000012"},
        {EBarCode::TypeEAN8, "12-34", n | c, "0000012"},
        {EBarCode::TypeEAN13, "4711", n, "0000000004711"},
        {EBarCode::TypeEAN13, "4711", n | c, "000000004711"},
        {EBarCode::TypeEAN13, "x4711", n, "0000000000000"},
        {EBarCode::TypeEAN8, "123456789", n, "123456789"},  // longer stays
        {EBarCode::TypeEAN8, "12-34", c, "12-34"},          // not asked
        {EBarCode::TypeUpper, "12-34", n, "12-34"},
    };
    for (const Case& one : cases) {
        m_barCode.DrawBarCode(image, &m_rect, one.text, one.type, one.flags, 0);
        EXPECT_EQ(Text(), one.prepared) << one.text << " " << one.flags;
        m_barCode.IsValidText(one.text, one.type, one.flags);
        EXPECT_EQ(Text(), one.prepared) << one.text << " " << one.flags;
    }
    // The samples force the check digit.
    m_barCode.DrawSampleBarCode(image, &m_rect, EBarCode::TypeEAN13, 0, 0);
    EXPECT_EQ(Text(), "123456789012");
    EXPECT_EQ(Record().checkDigit, 1);
    CRect rect(m_rect);
    m_barCode.DrawSampleBarCode(nullptr, rect, EBarCode::TypeMixed10, 0, 0);
    EXPECT_EQ(Text(), "AbCd1234z");
}

TEST_F(Contract, DrawBarCodeCutsTheTextAt48BytesAndIsValidTextDoesNot) {
    Image image(200, 120);
    for (std::size_t length : {47u, 48u, 60u, 200u}) {
        std::string text(length, 'A');
        m_barCode.DrawBarCode(image, &m_rect, text.c_str(), EBarCode::TypeUpper, 0, 0);
        EXPECT_EQ(Text(), text.substr(0, 48)) << length;
        for (std::size_t i = 56 + 48; i < 128; ++i) {
            ASSERT_EQ(m_call->record[i], 0) << length << " at " << i;
        }
        EXPECT_EQ(Record().constant, 4);
        m_barCode.IsValidText(text.c_str(), EBarCode::TypeUpper, 0);
        std::string whole(reinterpret_cast<const char*>(m_call->record) + 56,
                          std::min<std::size_t>(length, 256 - 56));
        EXPECT_EQ(whole, text.substr(0, whole.size())) << length;
    }
}

TEST_F(Contract, RotationCodesOfBothFunctions) {
    struct Case {
        LONG escapement;
        LONG orientation;
        int drawn;
        int checked;
    };
    const Case cases[] = {
        {0, 0, 0, 0},    {900, 0, 2, 0},     {0, 900, 2, 1},    {1800, 1800, -1, -1},
        {0, 2700, 1, 2}, {2700, 0, 1, 0},    {449, 900, 0, 1},  {3150, 3150, 0, 0},
        {0, 450, 2, 1},  {1349, 2250, 2, 2}, {0, 1350, -1, -1}, {-900, 3149, 1, 2},
    };
    for (const Case& one : cases) {
        Image image(200, 120, one.escapement, one.orientation);
        m_barCode.DrawBarCode(image, &m_rect, "A", EBarCode::TypeUpper, 0, 0);
        EXPECT_EQ(Record().rotation, one.drawn) << one.escapement << "/" << one.orientation;
        EXPECT_EQ(m_call->font.lfEscapement, 0);
        EXPECT_EQ(m_call->font.lfOrientation, 0);
        EXPECT_EQ(DrawingRotation(one.escapement, one.orientation), one.drawn);
        // IsValidText reads the screen's font, upright on this system.
        EXPECT_EQ(CheckingRotation(one.orientation), one.checked)
            << one.escapement << "/" << one.orientation;
    }
    m_barCode.IsValidText("A", EBarCode::TypeUpper, 0);
    EXPECT_EQ(Record().rotation, 0);
}

TEST_F(Contract, EntryPointsPassTheModuleAndReportAMissingName) {
    BARCODERECORD record{};
    RECT rect{0, 0, 10, 10};
    char options[] = "x";
    EXPECT_EQ(m_barCode.BarInfo(7, &record), 7);
    EXPECT_STREQ(m_call->entry, "BarInfo");
    EXPECT_EQ(m_barCode.BarCodef(&rect, nullptr, &record, options), 0);
    EXPECT_STREQ(m_call->entry, "BarCodef");
    EXPECT_EQ(m_barCode.BarCodeh(nullptr, &rect, nullptr, &record, options), 0);
    EXPECT_STREQ(m_call->entry, "BarCodeh");
    EXPECT_EQ(m_call->module, m_barCode.m_hDll);
    // A module without the entries (the OS layer's own): -2, and no
    // metafile.
    char layer[MAX_PATH];
    ASSERT_NE(GetModuleFileNameA(ModuleFromAddress(reinterpret_cast<LPCVOID>(&LoadLibraryA)), layer,
                                 sizeof layer),
              0u);
    BarCodeProbe other;
    other.m_hDll = LoadLibraryA(layer);
    ASSERT_NE(other.m_hDll, nullptr);
    EXPECT_EQ(other.BarCodeh(nullptr, &rect, nullptr, &record, options), -2);
    EXPECT_EQ(record.status, -2);
    record.status = 0;
    HENHMETAFILE metafile = nullptr;
    EXPECT_EQ(other.BarCodemx(nullptr, &rect, nullptr, &record, &metafile, options), nullptr);
    EXPECT_EQ(record.status, -2);
    EXPECT_EQ(other.BarCodef(&rect, nullptr, &record, options), -2);
    EXPECT_EQ(other.BarInfo(1, &record), -2);
    FreeLibrary(other.m_hDll);
    other.m_hDll = nullptr;
}

// Copies share the load; the library goes when the last of them does.
TEST(ContractCopies, ShareOneLoadFreedByTheLast) {
    ASSERT_EQ(GetModuleHandleA("Dlsbar32.dll"), nullptr);
    {
        EBarCode first;
        {
            EBarCode copy(first);
            EBarCode assigned;
            assigned = copy;
            EXPECT_TRUE(assigned.IsInstalled());
        }
        ASSERT_NE(GetModuleHandleA("Dlsbar32.dll"), nullptr);
        Image image(50, 50);
        RECT rect{0, 0, 50, 50};
        EXPECT_TRUE(first.DrawBarCode(image, &rect, "A", EBarCode::TypeUpper, 0, 0));
    }
    EXPECT_EQ(GetModuleHandleA("Dlsbar32.dll"), nullptr);
}

}  // namespace
}  // namespace nvk::os
