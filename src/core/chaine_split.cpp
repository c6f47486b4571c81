// Splitting a Chaine into a PTableau<Chaine>, and joining one back.
#include <cstring>

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"

int Chaine::Split(PTableau<Chaine>& out, char sep, char quote, bool noCase, bool unquote) const {
    out.RemoveAll();
    const auto add = [&](Chaine field) {
        if (unquote) {
            field.Unquote(quote);
        }
        out.Add(field);
    };
    int pos = FindCharQuoted(sep, quote, noCase, 0);
    if (pos < 0) {
        add(*this);
        return out.Size();
    }
    add(Left(pos));
    int start = pos + 1;
    while ((pos = FindCharQuoted(sep, quote, noCase, start)) >= 0) {
        add(Mid(start, pos - start));
        start = pos + 1;
    }
    add(Mid(start));
    return out.Size();
}

int Chaine::SplitSimple(PTableau<Chaine>& out, char sep, bool noCase) const {
    if (IsEmpty()) {
        out.RemoveAll();
        return 0;
    }
    // Read through a reference of our own: this value may be one of out's
    // elements, and is then never changed in place.
    const Chaine self(*this);
    const int length = self.Length();
    // The fields go into the elements out has, whose buffers take them in
    // place when they are their own and large enough; only the elements out
    // lacks are added, and those it has beyond the fields go.
    int count = 0;
    const auto put = [&](int start, int end) {
        if (count == out.Size()) {
            out.Add(Chaine());
        }
        Chaine& field = out[count++];
        if (end > start) {
            field.Assign(self.m_pText + start, end - start);
        } else {
            field.Empty();
        }
    };
    // The next sep from `start` on, or -1; with case, by the C library's
    // vector search.
    const auto next = [&](int start) {
        if (noCase) {
            const int pos = self.FindChar(sep, true, start);
            return pos < length ? pos : -1;
        }
        const void* hit =
            std::memchr(self.m_pText + start, sep, static_cast<std::size_t>(length - start));
        return hit == nullptr ? -1 : static_cast<int>(static_cast<const char*>(hit) - self.m_pText);
    };
    int start = 0;
    for (int pos; (pos = next(start)) >= 0; start = pos + 1) {
        put(start, pos);
    }
    put(start, length);
    out.SetSize(count);
    return count;
}

int Chaine::SplitLines(PTableau<Chaine>& out) const {
    out.RemoveAll();
    const int length = Length();
    int start = 0;
    for (;;) {
        int pos = FindChar('\n', false, start);
        const bool last = pos < 0 || pos >= length;
        if (last) {
            pos = length;
        }
        Chaine line = Mid(start, pos - start);
        out.Add(line.TrimLeft('\r').TrimRight('\r'));
        if (last) {
            return out.Size();
        }
        start = pos + 1;
    }
}

bool Chaine::SplitFirst(char c, Chaine& left, Chaine& right, bool noCase) const {
    const int pos = FindChar(c, noCase, 0);
    if (pos < 0) {
        left = *this;
        return false;
    }
    // Read both halves before assigning: left or right may be this value.
    Chaine before = Left(pos);
    Chaine after = Mid(pos + 1);
    left = before;
    right = after;
    return true;
}

Chaine& Chaine::Join(char sep, const PTableau<Chaine>& array) {
    const int count = array.Size();
    std::int64_t length = count > 0 ? count - 1 : 0;
    for (int i = 0; i < count; ++i) {
        length += array[i].Length();
    }
    Chaine result;
    char* out = result.SetLength(static_cast<int>(length));
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            *out++ = sep;
        }
        std::memcpy(out, array[i].c_str(), static_cast<std::size_t>(array[i].Length()));
        out += array[i].Length();
    }
    if (length == 0) {
        Empty();
        return *this;
    }
    return Assign(result);
}
