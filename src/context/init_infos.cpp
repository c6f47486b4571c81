#include "nvk/context/init_infos.h"

#include <cstdio>
#include <cstring>

namespace {

int FoldAscii(unsigned char c) {
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

}  // namespace

EInitObjectID::EInitObjectID(const char* text) {
    if (text != nullptr) {
        std::snprintf(m_Text, sizeof m_Text, "%.*s", kMaxLength, text);
    }
}

EInitObjectID::EInitObjectID(const char* text, int length) {
    if (text != nullptr && length > 0) {
        std::snprintf(m_Text, sizeof m_Text, "%.*s", length < kMaxLength ? length : kMaxLength,
                      text);
    }
}

int EInitObjectID::CompareNoCase(const EInitObjectID& a, const EInitObjectID& b) {
    for (int i = 0;; ++i) {
        const int left = FoldAscii(static_cast<unsigned char>(a.m_Text[i]));
        const int right = FoldAscii(static_cast<unsigned char>(b.m_Text[i]));
        if (left != right || left == 0) {
            return left - right;
        }
    }
}

EInitInfos::EInitInfos(EInitCallback callback, void* context, const char* sourceName,
                       const char* dependencies, int line)
    : Callback(callback), Context(context), Dependencies(dependencies) {
    if (line == 0) {
        Id = EInitObjectID(sourceName);
        return;
    }
    char text[EInitObjectID::kMaxLength + 1];
    std::snprintf(text, sizeof text, "%.*s(%.6d)", 55, sourceName != nullptr ? sourceName : "",
                  line);
    Id = EInitObjectID(text);
}
