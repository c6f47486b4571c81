// Proof with real readers: what the engine draws into PNG, PDF and SVG
// files decodes to the text, with the check digits the engine adds, upright
// and turned.
#include <cstdio>
#include <filesystem>
#include <string>

#include "barcode/bar_code_test_support.h"

namespace nvk::os {
namespace {

class Reader : public ::testing::Test {
protected:
    void SetUp() override {
        m_folder =
            std::filesystem::temp_directory_path() /
            ("nvk_barcode_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
             "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(m_folder);
        ASSERT_TRUE(m_barCode.IsInstalled());
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }

    // Draws into a new file, with a font turned by `escapement`.
    bool Draw(const std::string& file, const char* text, EBarCode::eType type, DWORD flags,
              int width = 600, int height = 200, LONG escapement = 0) {
        HDC dc = CreateFileDC(file.c_str(), width, height);
        EXPECT_NE(dc, nullptr);
        LOGFONTA log{};
        log.lfHeight = -20;
        log.lfEscapement = log.lfOrientation = escapement;
        HFONT font = CreateFontIndirectA(&log);
        HGDIOBJ old = SelectObject(dc, font);
        RECT rect{0, 0, width, height};
        bool drawn = m_barCode.DrawBarCode(dc, &rect, text, type, flags, 0);
        SelectObject(dc, old);
        DeleteObject(font);
        EXPECT_TRUE(DeleteDC(dc));
        return drawn;
    }

    static std::string Run(const std::string& command) {
        std::string output;
        FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
        if (pipe == nullptr) {
            return output;
        }
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
            output += buffer;
        }
        pclose(pipe);
        return output;
    }

    // What zbar reads in an image: "TYPE:data" lines.
    static std::string Scan(const std::string& image) {
        return Run("zbarimg -q --nodbus '" + image + "'");
    }

    EBarCode m_barCode;
    std::filesystem::path m_folder;
};

// Code 39 full ASCII as read raw: "+X" is a lower-case x.
std::string FullAscii(const std::string& raw) {
    std::string text;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == '+' && i + 1 < raw.size()) {
            text += static_cast<char>(raw[++i] - 'A' + 'a');
        } else {
            text += raw[i];
        }
    }
    return text;
}

// The modulo 43 check character of a Code 39 text.
char Code39Check(const std::string& text) {
    static const std::string kSet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%";
    std::size_t sum = 0;
    for (char c : text) {
        sum += kSet.find(c);
    }
    return kSet[sum % 43];
}

TEST_F(Reader, EveryTypeDecodesToItsTextWithTheCheckDigitAdded) {
    const DWORD show = EBarCode::FlagShowText, check = EBarCode::FlagCheckDigit;
    struct Case {
        EBarCode::eType type;
        const char* text;
        DWORD flags;
        std::string read;
    };
    const Case cases[] = {
        {EBarCode::TypeEAN13, "123456789012", show | check, "EAN-13:1234567890128"},
        {EBarCode::TypeEAN13, "4006381333931", 0, "EAN-13:4006381333931"},
        {EBarCode::TypeEAN8, "1234567", show | check, "EAN-8:12345670"},
        {EBarCode::TypeEAN8, "96385074", show, "EAN-8:96385074"},
        {EBarCode::TypeEAN8, "42", show | check | EBarCode::FlagNormalize, "EAN-8:00000420"},
        {EBarCode::TypeUpper, "ABCD1234Z", show, "CODE-39:ABCD1234Z"},
        {EBarCode::TypeUpper, "ABCD1234Z", check,
         std::string("CODE-39:ABCD1234Z") + Code39Check("ABCD1234Z")},
        {EBarCode::TypeMixed10, "AbCd1234z", show, "CODE-93:AbCd1234z"},
        {EBarCode::TypeMixed18, "AbCd 1234 z!", show, "CODE-128:AbCd 1234 z!"},
    };
    for (const Case& one : cases) {
        std::string file = Path("code.png");
        ASSERT_TRUE(Draw(file, one.text, one.type, one.flags)) << one.text;
        EXPECT_EQ(Scan(file), one.read + "\n") << one.text;
    }
    // Full ASCII Code 39 reads as its plain Code 39 encoding.
    std::string file = Path("ascii.png");
    ASSERT_TRUE(Draw(file, "AbCd1234z", EBarCode::TypeMixed9, check));
    std::string read = Scan(file);
    ASSERT_TRUE(read.starts_with("CODE-39:")) << read;
    std::string raw = read.substr(8, read.size() - 9);
    EXPECT_EQ(FullAscii(raw.substr(0, raw.size() - 1)), "AbCd1234z");
    EXPECT_EQ(raw.back(), Code39Check(raw.substr(0, raw.size() - 1)));
}

TEST_F(Reader, TurnedCodesDecode) {
    for (LONG escapement : {900, 1800, 2700}) {
        std::string file = Path("turned.png");
        bool wide = escapement == 1800;
        ASSERT_TRUE(Draw(file, "123456789012", EBarCode::TypeEAN13,
                         EBarCode::FlagShowText | EBarCode::FlagCheckDigit, wide ? 600 : 200,
                         wide ? 200 : 600, escapement));
        EXPECT_EQ(Scan(file), "EAN-13:1234567890128\n") << escapement;
    }
}

TEST_F(Reader, PdfAndSvgDecodeOnceRendered) {
    std::string pdf = Path("code.pdf"), svg = Path("code.svg");
    ASSERT_TRUE(Draw(pdf, "AbCd1234z", EBarCode::TypeMixed18, EBarCode::FlagShowText, 300, 100));
    ASSERT_TRUE(Draw(svg, "1234567", EBarCode::TypeEAN8,
                     EBarCode::FlagShowText | EBarCode::FlagCheckDigit, 300, 100, 900));
    Run("pdftoppm -png -r 200 -singlefile '" + pdf + "' '" + Path("pdf") + "'");
    Run("rsvg-convert --zoom 2 -o '" + Path("svg.png") + "' '" + svg + "'");
    EXPECT_EQ(Scan(Path("pdf.png")), "CODE-128:AbCd1234z\n");
    EXPECT_EQ(Scan(Path("svg.png")), "EAN-8:12345670\n");
}

TEST_F(Reader, TheToolDrawsAndChecks) {
    std::string tool = NVK_TOOL;
    std::string file = Path("tool.png");
    auto status = [](const std::string& command) {
        int result = std::system((command + " >/dev/null 2>&1").c_str());
        return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
    };
    EXPECT_EQ(status(tool +
                     " barcode draw 1234567 --type ean8 --check-digit --show-text "
                     "--colour 203080 --size 400x150 -o " +
                     file),
              0);
    EXPECT_EQ(Scan(file), "EAN-8:12345670\n");
    EXPECT_EQ(status(tool + " barcode draw abc --type upper -o " + file), 1);
    EXPECT_EQ(Scan(file), "");
    EXPECT_EQ(status(tool + " barcode check ABC --type upper"), 0);
    EXPECT_EQ(status(tool + " barcode check abc --type upper"), 1);
    EXPECT_EQ(status(tool + " barcode check 12345670 --type ean8"), 0);
    EXPECT_EQ(status(tool + " barcode draw x --type ean8 -o " + Path("x.gif")), 2);
}

}  // namespace
}  // namespace nvk::os
