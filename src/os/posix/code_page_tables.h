// Windows' tables of the single-byte code pages, and each one's reverse.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nvk::os::posix {

struct BestFit {
    char16_t character;
    unsigned char byte;
};

struct SingleByteTable {
    unsigned codePage;
    const char16_t* high;  // the characters of bytes 0x80..0xFF
    const BestFit* bestFit;
    std::size_t bestFitCount;
};

// Null for a code page that is not single-byte or not known here.
const SingleByteTable* FindSingleByteTable(unsigned codePage);

// A single-byte code page both ways, made once per code page and process.
class SingleByteCodePage {
public:
    static constexpr int kNone = -1;

    // Null for a code page FindSingleByteTable does not know.
    static const SingleByteCodePage* For(unsigned codePage);

    char16_t Wide(unsigned char byte) const { return toWide_[byte]; }
    // The byte of `c`, its best fit when `bestFit` allows it, or kNone.
    int Byte(char16_t c, bool bestFit) const {
        const std::uint16_t entry = toByte_[c];
        return (entry & kExact) != 0 || (bestFit && (entry & kBestFit) != 0) ? entry & 0xFF : kNone;
    }

private:
    static constexpr std::uint16_t kExact = 0x100;
    static constexpr std::uint16_t kBestFit = 0x200;

    explicit SingleByteCodePage(const SingleByteTable& table);

    char16_t toWide_[256];
    std::uint16_t toByte_[65536];
};

}  // namespace nvk::os::posix
