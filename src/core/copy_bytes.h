// Copies of the short texts that most values hold. memcpy costs a call and a
// dispatch on the length that outweigh moving a few bytes; up to 16 bytes two
// moves of a fixed size that overlap do it inline.
#pragma once

#include <cstdint>
#include <cstring>

namespace nvk {

inline void CopyBytes(char* to, const char* from, std::size_t n) {
    if (n > 16) {
        std::memcpy(to, from, n);
    } else if (n >= 8) {
        std::uint64_t head;
        std::uint64_t tail;
        std::memcpy(&head, from, 8);
        std::memcpy(&tail, from + n - 8, 8);
        std::memcpy(to, &head, 8);
        std::memcpy(to + n - 8, &tail, 8);
    } else if (n >= 4) {
        std::uint32_t head;
        std::uint32_t tail;
        std::memcpy(&head, from, 4);
        std::memcpy(&tail, from + n - 4, 4);
        std::memcpy(to, &head, 4);
        std::memcpy(to + n - 4, &tail, 4);
    } else if (n > 0) {
        to[0] = from[0];
        to[n / 2] = from[n / 2];
        to[n - 1] = from[n - 1];
    }
}

}  // namespace nvk
