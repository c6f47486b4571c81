// Bar codes drawn into a 600 x 200 image, against zint's own raster output
// of the same code at about the same size (ZBarcode_Encode_and_Buffer).
// Ours also records the drawing into a metafile and plays it back, with
// the text set by Pango.
#include <zint.h>

#include <cstring>
#include <string>

#include "nvk/platform/bar_code.h"
#include "os/api/gdi.h"
#include "ratio.h"

namespace {

namespace os = nvk::os;

constexpr int kWidth = 600;
constexpr int kHeight = 200;

struct Code {
    const char* name;
    EBarCode::eType type;
    int symbology;
    const char* text;
};

const Code kCodes[] = {
    {"EAN-13", EBarCode::TypeEAN13, BARCODE_EANX, "123456789012"},
    {"Code 128", EBarCode::TypeMixed18, BARCODE_CODE128, "AbCd1234z"},
};

void Ours(benchmark::State& state, const Code& code) {
    EBarCode barCode;
    if (!barCode.IsInstalled()) {
        state.SkipWithError("the bar-code engine is not beside the library");
        return;
    }
    os::HDC dc = os::CreateImageDC(kWidth, kHeight);
    os::RECT rect{0, 0, kWidth, kHeight};
    for (auto _ : state) {
        bool drawn = barCode.DrawBarCode(dc, &rect, code.text, code.type,
                                         EBarCode::FlagShowText | EBarCode::FlagCheckDigit, 0);
        benchmark::DoNotOptimize(drawn);
    }
    os::DeleteDC(dc);
}

zint_symbol* ZintSymbol(const Code& code, float scale) {
    zint_symbol* symbol = ZBarcode_Create();
    symbol->symbology = code.symbology;
    symbol->output_options |= BARCODE_QUIET_ZONES;
    symbol->scale = scale;
    return symbol;
}

// The raster scale that makes zint's image about as wide as ours.
float ZintScale(const Code& code) {
    zint_symbol* symbol = ZintSymbol(code, 1);
    const auto* text = reinterpret_cast<const unsigned char*>(code.text);
    ZBarcode_Encode_and_Buffer(symbol, text, static_cast<int>(std::strlen(code.text)), 0);
    float scale = static_cast<float>(kWidth) / static_cast<float>(symbol->bitmap_width);
    ZBarcode_Delete(symbol);
    return scale;
}

void Zint(benchmark::State& state, const Code& code) {
    const float scale = ZintScale(code);
    const auto* text = reinterpret_cast<const unsigned char*>(code.text);
    const int length = static_cast<int>(std::strlen(code.text));
    for (auto _ : state) {
        zint_symbol* symbol = ZintSymbol(code, scale);
        int result = ZBarcode_Encode_and_Buffer(symbol, text, length, 0);
        benchmark::DoNotOptimize(symbol->bitmap);
        benchmark::DoNotOptimize(result);
        ZBarcode_Delete(symbol);
    }
}

const bool kRegistered = [] {
    for (const Code& code : kCodes) {
        std::string name = std::string(code.name) + " 600x200";
        benchmark::RegisterBenchmark((name + " | EBarCode").c_str(), Ours, code);
        benchmark::RegisterBenchmark((name + " | zint raster").c_str(), Zint, code);
    }
    return true;
}();

}  // namespace

int main(int argc, char** argv) {
    return nvk::bench::RunWithRatios(argc, argv, "EBarCode");
}
