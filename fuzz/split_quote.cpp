// Splitting, quoting and unquoting arbitrary text. The first byte is the
// separator, the second the quote, the rest the text. Splitting without
// unquoting loses nothing but the separators: joining the fields gives the
// text back.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > 1u << 16) {
        return 0;
    }
    const auto sep = static_cast<char>(data[0]);
    const auto quote = static_cast<char>(data[1]);
    const Chaine text(data + 2, static_cast<int>(size - 2), true);

    PTableau<Chaine> fields;
    Chaine joined;
    const int count = text.Split(fields, sep, quote, false, false);
    if (count != fields.Size() || count < 1) {
        std::abort();
    }
    if (sep != '\0' && joined.Join(sep, fields) != text) {
        std::abort();
    }
    text.Split(fields, sep, quote, true, true);
    if (text.SplitSimple(fields, sep, true) > 0 && sep != '\0' &&
        !(joined.Join(sep, fields).EqualsNoCase(text))) {
        std::abort();
    }

    Chaine quoted(text);
    quoted.Quote(quote);
    if (quoted.Length() != text.Length() + 2 + text.CountChar(quote)) {
        std::abort();
    }
    quoted.Unquote(quote);
    Chaine unquoted(text);
    unquoted.Unquote(quote);
    if (unquoted.Length() > text.Length()) {
        std::abort();
    }
    return 0;
}
