// Hexadecimal text from and to bytes. Bytes written as hex read back the
// same; arbitrary text decodes without writing past the destination, and a
// destination larger than the text fills is cleared behind it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "nvk/core/chaine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 1u << 16) {
        return 0;
    }
    const int n = static_cast<int>(size);
    Chaine hex;
    hex.FromHex(data, n);
    std::vector<std::uint8_t> back(size);
    if (hex.Length() != 2 * n || hex.ToBytes(back.data(), n) != n ||
        std::memcmp(back.data(), data, size) != 0) {
        std::abort();
    }

    const Chaine text(data + 1, n - 1);
    const int room = data[0];
    std::vector<std::uint8_t> dest(static_cast<std::size_t>(room) + 1, 0xA5);
    const int got = text.ToBytes(dest.data(), room);
    if (got != std::min(text.Length() / 2, room) || text.ToBytes(nullptr, room) != got ||
        dest[static_cast<std::size_t>(room)] != 0xA5) {
        std::abort();
    }
    for (int i = got; i < room; ++i) {
        if (dest[static_cast<std::size_t>(i)] != 0) {
            std::abort();
        }
    }
    return 0;
}
