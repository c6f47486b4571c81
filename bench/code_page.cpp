// Code-page conversions of the OS layer against ICU's converters, on 1 MB of
// French text with some of each code page's upper half, both ways, for
// Windows-1252 (the ANSI code page) and 850 (the OEM one).
#include <unicode/ucnv.h>

#include <string>

#include "os/api/nls.h"
#include "ratio.h"

namespace {

using namespace nvk::os;

constexpr std::size_t kTextBytes = 1 << 20;

// A megabyte of the code page's text: mostly ASCII, with accented letters
// and symbols of its upper half, as accounting texts have.
std::string Text(UINT codePage) {
    const std::u16string line =
        u"Facture n\u00B0 2024-117, \u00E9ch\u00E9ance: 30 jours; montant d\u00FB: 1\u00A0250,00 "
        u"\u00C0 r\u00E9gler \u00E0 la soci\u00E9t\u00E9 Gen\u00E8ve & Z\u00FCrich.\r\n";
    std::string bytes(line.size() * 4, '\0');
    const int n =
        WideCharToMultiByte(codePage, 0, line.data(), static_cast<int>(line.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(n));
    std::string text;
    while (text.size() < kTextBytes) {
        text += bytes;
    }
    text.resize(kTextBytes);
    return text;
}

std::u16string Wide(UINT codePage, const std::string& text) {
    std::u16string wide(text.size(), u'\0');
    MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                        static_cast<int>(wide.size()));
    return wide;
}

UConverter* IcuConverter(UINT codePage) {
    UErrorCode status = U_ZERO_ERROR;
    return ucnv_open(codePage == 1252 ? "windows-1252" : "ibm-850", &status);
}

void ToWideOurs(benchmark::State& state, UINT codePage) {
    const std::string text = Text(codePage);
    std::u16string wide(text.size(), u'\0');
    for (auto _ : state) {
        benchmark::DoNotOptimize(MultiByteToWideChar(codePage, 0, text.data(),
                                                     static_cast<int>(text.size()), wide.data(),
                                                     static_cast<int>(wide.size())));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void ToWideIcu(benchmark::State& state, UINT codePage) {
    const std::string text = Text(codePage);
    std::u16string wide(text.size(), u'\0');
    UConverter* converter = IcuConverter(codePage);
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        benchmark::DoNotOptimize(ucnv_toUChars(converter, wide.data(),
                                               static_cast<int32_t>(wide.size()), text.data(),
                                               static_cast<int32_t>(text.size()), &status));
    }
    ucnv_close(converter);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void FromWideOurs(benchmark::State& state, UINT codePage) {
    const std::u16string wide = Wide(codePage, Text(codePage));
    std::string text(wide.size(), '\0');
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            WideCharToMultiByte(codePage, 0, wide.data(), static_cast<int>(wide.size()),
                                text.data(), static_cast<int>(text.size()), nullptr, nullptr));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void FromWideIcu(benchmark::State& state, UINT codePage) {
    const std::u16string wide = Wide(codePage, Text(codePage));
    std::string text(wide.size(), '\0');
    UConverter* converter = IcuConverter(codePage);
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        benchmark::DoNotOptimize(ucnv_fromUChars(converter, text.data(),
                                                 static_cast<int32_t>(text.size()), wide.data(),
                                                 static_cast<int32_t>(wide.size()), &status));
    }
    ucnv_close(converter);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

}  // namespace

int main(int argc, char** argv) {
    for (const UINT codePage : {1252u, 850u}) {
        const std::string cp = std::to_string(codePage);
        benchmark::RegisterBenchmark((cp + " to UTF-16, 1 MB | nvk").c_str(), ToWideOurs, codePage);
        benchmark::RegisterBenchmark((cp + " to UTF-16, 1 MB | ICU").c_str(), ToWideIcu, codePage);
        benchmark::RegisterBenchmark(("UTF-16 to " + cp + ", 1 MB | nvk").c_str(), FromWideOurs,
                                     codePage);
        benchmark::RegisterBenchmark(("UTF-16 to " + cp + ", 1 MB | ICU").c_str(), FromWideIcu,
                                     codePage);
    }
    return nvk::bench::RunWithRatios(argc, argv, "nvk");
}
