// Wildcard matching over arbitrary patterns and texts: no fault, no hang.
// The input is "pattern\ntext"; the first byte of the text also picks the
// start position. Both forms must agree when neither side holds a letter.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "nvk/core/chaine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 1u << 16) {
        return 0;
    }
    const auto* bytes = reinterpret_cast<const char*>(data);
    const auto* cut = static_cast<const char*>(std::memchr(bytes, '\n', size));
    const std::size_t patternLength = cut == nullptr ? size : static_cast<std::size_t>(cut - bytes);
    const Chaine pattern(bytes, static_cast<int>(patternLength), true);
    const std::size_t textStart = cut == nullptr ? size : patternLength + 1;
    const Chaine text(bytes + textStart, static_cast<int>(size - textStart));
    const int pos = text.IsEmpty() ? 0 : static_cast<std::uint8_t>(text[0]) % 4;

    const bool plain = text.Like(pattern, pos);
    const bool folded = text.LikeNoCase(pattern, pos);
    bool caseless = true;
    for (const Chaine* value : {&pattern, &text}) {
        for (int i = 0; i < value->Length(); ++i) {
            const auto c = static_cast<std::uint8_t>((*value)[i]);
            caseless = caseless && !((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c >= 0xC0);
        }
    }
    if (caseless && plain != folded) {
        std::abort();
    }
    if (pos >= text.Length() && (plain || folded)) {
        std::abort();  // an empty text matches nothing
    }
    return 0;
}
