#include "os/api/kernel_text.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

namespace nvk::os {

LPSTR lstrcpynA(LPSTR destination, LPCSTR source, int length) {
    if (destination == nullptr || length <= 0) {
        return destination;
    }
    const auto room = static_cast<std::size_t>(length - 1);
    const std::size_t size = source == nullptr ? 0 : strnlen(source, room);
    std::memmove(destination, source == nullptr ? "" : source, size);
    destination[size] = '\0';
    return destination;
}

int wsprintfA(LPSTR buffer, LPCSTR format, ...) {
    constexpr int kRoom = 1024;
    if (buffer == nullptr || format == nullptr) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int wanted = std::vsnprintf(buffer, kRoom, format, arguments);
    va_end(arguments);
    if (wanted < 0) {
        buffer[0] = '\0';
        return 0;
    }
    return wanted < kRoom ? wanted : kRoom - 1;
}

int MulDiv(int number, int numerator, int denominator) {
    if (denominator == 0) {
        return -1;
    }
    std::int64_t product = std::int64_t{number} * numerator;
    std::int64_t divisor = denominator;
    if (divisor < 0) {
        product = -product;
        divisor = -divisor;
    }
    const std::int64_t half = divisor / 2;
    const std::int64_t result = (product >= 0 ? product + half : product - half) / divisor;
    if (result > std::numeric_limits<int>::max() || result < -std::numeric_limits<int>::max()) {
        return -1;
    }
    return static_cast<int>(result);
}

}  // namespace nvk::os
