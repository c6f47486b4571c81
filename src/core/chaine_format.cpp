// printf formatting into a Chaine, in the dialect that CString shares.
#include <cstdarg>
#include <string>

#include "afx/text_format.h"
#include "nvk/core/chaine.h"

Chaine& Chaine::FormatV(const char* format, va_list args) {
    if (format == nullptr) {
        Empty();
        return *this;
    }
    // The text is made apart first: the format and the arguments may point
    // into this value.
    const std::string text = nvk::afx::FormatText(format, args);
    if (text.empty()) {
        Empty();
        return *this;
    }
    return Assign(Chaine(text.c_str(), static_cast<int>(text.size())));
}

Chaine& Chaine::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
    return *this;
}
