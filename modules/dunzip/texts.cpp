#include "texts.h"

#include <cstring>
#include <vector>

#include "os/api/nls.h"

namespace nvk::unzip {

namespace {

constexpr unsigned kKindText = 13;
constexpr int kBufferSize = 260;
constexpr os::UINT kAnsi = 1252;

std::string Convert(std::string_view text, os::UINT from, os::UINT to) {
    if (text.empty()) {
        return {};
    }
    const int size = static_cast<int>(text.size());
    int wide = os::MultiByteToWideChar(from, 0, text.data(), size, nullptr, 0);
    if (wide <= 0) {
        return std::string(text);
    }
    std::basic_string<os::WCHAR> units(static_cast<std::size_t>(wide), 0);
    os::MultiByteToWideChar(from, 0, text.data(), size, units.data(), wide);
    int bytes = os::WideCharToMultiByte(to, 0, units.data(), wide, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) {
        return std::string(text);
    }
    std::string result(static_cast<std::size_t>(bytes), '\0');
    os::WideCharToMultiByte(to, 0, units.data(), wide, result.data(), bytes, nullptr, nullptr);
    return result;
}

bool IsAscii(std::string_view text) {
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string Message(const UNZIPCMDSTRUCT& command, int id, const char* fallback) {
    if (command.lpMessageDisplay != nullptr) {
        char buffer[kBufferSize] = {};
        if (command.lpMessageDisplay(kKindText, 0, id, 0, buffer, nullptr,
                                     command.lpMessageDisplayData) == 1) {
            buffer[kBufferSize - 1] = '\0';
            if (std::strcmp(buffer, "-") != 0) {
                return buffer;
            }
        }
    }
    return fallback;
}

std::string Substitute(std::string_view format, std::initializer_list<std::string_view> args) {
    std::string out;
    const std::string_view* next = args.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') {
            out += format[i];
            continue;
        }
        if (i + 1 < format.size() && format[i + 1] == '%') {
            out += '%';
            ++i;
            continue;
        }
        std::size_t end = i + 1;
        while (end < format.size() && std::strchr("#-+ 0123456789.lhLqjzt", format[end])) {
            ++end;
        }
        if (end == format.size()) {
            out.append(format.substr(i));
            break;
        }
        if (next != args.end()) {
            out.append(*next++);
        }
        i = end;
    }
    return out;
}

std::string AnsiFromUtf8(std::string_view utf8) {
    return IsAscii(utf8) ? std::string(utf8) : Convert(utf8, os::CP_UTF8, kAnsi);
}

std::string Utf8FromAnsi(std::string_view ansi) {
    return IsAscii(ansi) ? std::string(ansi) : Convert(ansi, kAnsi, os::CP_UTF8);
}

}  // namespace nvk::unzip
