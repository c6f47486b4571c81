#include "terminal_text.h"

#include <array>
#include <iostream>
#include <streambuf>
#include <vector>

#include "os/api/console_code_page.h"
#include "os/api/nls.h"

namespace nvk::tool {

namespace {

constexpr os::UINT kAnsi = 1252;

bool g_raw = false;
bool g_lost = false;

std::string CharsetName(os::UINT codePage) {
    return codePage == os::CP_UTF8 ? "UTF-8" : "code page " + std::to_string(codePage);
}

// What each Windows-1252 byte is in the terminal's charset; empty for a
// character the charset lacks. The code page is single-byte, so bytes
// convert one by one, whatever the writes cut them into.
using ByteForms = std::array<std::string, 256>;

ByteForms MakeByteForms(os::UINT terminal) {
    // UTF-8 holds every character and refuses the default-character flag.
    const bool utf8 = terminal == os::CP_UTF8;
    ByteForms forms;
    for (int c = 0; c < 256; ++c) {
        const char byte = static_cast<char>(c);
        os::WCHAR wide = 0;
        if (os::MultiByteToWideChar(kAnsi, os::MB_ERR_INVALID_CHARS, &byte, 1, &wide, 1) != 1) {
            continue;
        }
        os::BOOL lost = os::FALSE;
        char out[8];
        const int size =
            os::WideCharToMultiByte(terminal, utf8 ? 0 : os::WC_NO_BEST_FIT_CHARS, &wide, 1, out,
                                    sizeof out, nullptr, utf8 ? nullptr : &lost);
        if (size > 0 && lost == os::FALSE) {
            forms[static_cast<std::size_t>(c)].assign(out, static_cast<std::size_t>(size));
        }
    }
    return forms;
}

// A stream buffer that writes Windows-1252 text into another in the
// terminal's charset; a character without a form there goes out as '?'.
class TerminalBuffer final : public std::streambuf {
public:
    TerminalBuffer(std::streambuf* target, const ByteForms& forms)
        : target_(target), forms_(forms) {}

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) {
            return traits_type::not_eof(c);
        }
        const char byte = traits_type::to_char_type(c);
        return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
    }

    std::streamsize xsputn(const char* text, std::streamsize count) override {
        std::string converted;
        converted.reserve(static_cast<std::size_t>(count));
        for (std::streamsize i = 0; i < count; ++i) {
            const std::string& form = forms_[static_cast<unsigned char>(text[i])];
            g_lost |= form.empty();
            converted += form.empty() ? "?" : form;
        }
        const auto size = static_cast<std::streamsize>(converted.size());
        return target_->sputn(converted.data(), size) == size ? count : 0;
    }

    int sync() override { return target_->pubsync(); }

private:
    std::streambuf* target_;
    const ByteForms& forms_;
};

}  // namespace

void SetRawBytes(bool raw) {
    g_raw = raw;
}

std::string FromTerminal(std::string_view text, std::string& ansi) {
    if (g_raw || text.empty()) {
        ansi = text;
        return {};
    }
    static const os::UINT terminal = os::GetConsoleCP();
    const auto size = static_cast<int>(text.size());
    // At most one UTF-16 unit per byte, whatever the charset.
    std::vector<os::WCHAR> wide(text.size());
    const int units = os::MultiByteToWideChar(terminal, os::MB_ERR_INVALID_CHARS, text.data(), size,
                                              wide.data(), size);
    if (units == 0) {
        return "is not text in " + CharsetName(terminal);
    }
    os::BOOL lost = os::FALSE;
    ansi.assign(static_cast<std::size_t>(units), '\0');
    os::WideCharToMultiByte(kAnsi, os::WC_NO_BEST_FIT_CHARS, wide.data(), units, ansi.data(), units,
                            nullptr, &lost);
    if (lost != os::FALSE) {
        ansi.clear();
        return "holds characters that Windows-1252 lacks";
    }
    return {};
}

void ConvertStandardStreams() {
    if (g_raw) {
        return;
    }
    // Made once and never freed: the streams flush into them until the very
    // end of the process, after every static of ours is gone.
    static const ByteForms* forms = new ByteForms(MakeByteForms(os::GetConsoleOutputCP()));
    std::cout.rdbuf(new TerminalBuffer(std::cout.rdbuf(), *forms));
    std::cerr.rdbuf(new TerminalBuffer(std::cerr.rdbuf(), *forms));
}

bool LostCharacters() {
    return g_lost;
}

}  // namespace nvk::tool
