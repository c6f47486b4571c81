// Account and identity checks against a textbook implementation written
// here: the IBAN by ISO 13616 (letters expanded to digits, then mod 97 over
// the decimal text, nine digits at a time) and the social-security key by
// integer arithmetic on the 13 digits. The inputs are a fixed mix of valid
// and invalid French, German, Swiss, British and other numbers.
#include <cstdint>
#include <string>
#include <vector>

#include "nvk/codes/iban.h"
#include "nvk/codes/nir.h"
#include "ratio.h"

namespace {

const char* const kValidIbans[] = {
    "FR7630006000011234567890189",
    "FR1420041010050500013M02606",
    "DE89370400440532013000",
    "CH9300762011623852957",
    "GB29NWBK60161331926819",
    "NL91ABNA0417164300",
    "BE68539007547034",
    "IT60X0542811101000000123456",
    "ES9121000418450200051332",
    "LU280019400644750000",
    "MC5811222000010123456789030",
    "AT611904300234573201",
};

// Each valid number, and a copy with one digit of its content changed.
std::vector<std::string> IbanTexts() {
    std::vector<std::string> texts;
    for (const char* text : kValidIbans) {
        std::string wrong = text;
        char& digit = wrong[wrong.size() - 3];
        digit = digit == '9' ? '0' : static_cast<char>(digit + 1);
        texts.emplace_back(text);
        texts.push_back(wrong);
    }
    return texts;
}

bool TextbookIbanIsValid(const std::string& iban) {
    if (iban.size() < 5) {
        return false;
    }
    std::string digits;
    for (char c : iban.substr(4) + iban.substr(0, 4)) {
        if (c >= '0' && c <= '9') {
            digits += c;
        } else if (c >= 'A' && c <= 'Z') {
            digits += std::to_string(c - 'A' + 10);
        } else {
            return false;
        }
    }
    while (digits.size() > 9) {
        digits = std::to_string(std::stoi(digits.substr(0, 9)) % 97) + digits.substr(9);
    }
    return std::stoi(digits) % 97 == 1;
}

void IbanCheckEIBAN(benchmark::State& state) {
    std::vector<EIBAN> ibans;
    for (const std::string& text : IbanTexts()) {
        ibans.emplace_back(text.c_str());
    }
    for (auto _ : state) {
        for (const EIBAN& iban : ibans) {
            benchmark::DoNotOptimize(iban.IsValid());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ibans.size()));
}
BENCHMARK(IbanCheckEIBAN)->Name("IBAN check | EIBAN");

void IbanCheckTextbook(benchmark::State& state) {
    const std::vector<std::string> texts = IbanTexts();
    for (auto _ : state) {
        for (const std::string& text : texts) {
            benchmark::DoNotOptimize(TextbookIbanIsValid(text));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
}
BENCHMARK(IbanCheckTextbook)->Name("IBAN check | textbook");

// Numbers with their keys, every other one wrong; Corsican ones included.
const char* const kNirs[] = {
    "185057800608491", "185057800608490", "185052A00608435", "185052A00608436",
    "285122B01234571", "285122B01234572", "299031234567841", "299031234567842",
};

bool TextbookNirIsValid(const std::string& text) {
    std::string num = text.substr(0, 13);
    if (num.compare(5, 2, "2A") == 0) {
        num.replace(5, 2, "19");
    } else if (num.compare(5, 2, "2B") == 0) {
        num.replace(5, 2, "18");
    }
    return 97 - std::stoll(num) % 97 == std::stoll(text.substr(13));
}

void NirCheckCNIR(benchmark::State& state) {
    std::vector<CNIR> nirs(std::size(kNirs));
    for (std::size_t i = 0; i < nirs.size(); ++i) {
        nirs[i].Set(kNirs[i]);
    }
    for (auto _ : state) {
        for (const CNIR& nir : nirs) {
            benchmark::DoNotOptimize(nir.IsValid());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(nirs.size()));
}
BENCHMARK(NirCheckCNIR)->Name("NIR check | CNIR");

void NirCheckTextbook(benchmark::State& state) {
    const std::vector<std::string> texts(std::begin(kNirs), std::end(kNirs));
    for (auto _ : state) {
        for (const std::string& text : texts) {
            benchmark::DoNotOptimize(TextbookNirIsValid(text));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
}
BENCHMARK(NirCheckTextbook)->Name("NIR check | textbook");

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    nvk::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios("EIBAN");
    reporter.PrintRatios("CNIR");
    benchmark::Shutdown();
    return 0;
}
