// AreEqualsFiles and TranslateIntoLongName: names as the folders spell them.
#include <cstring>
#include <string>

#include "nvk/files/file_operations.h"
#include "os/api/find.h"

namespace os = nvk::os;

namespace {

bool IsSeparator(char c) {
    return c == '\\';
}

// The component that ends `text` replaced by the name the folder gives it.
void LookUp(std::string& text, std::size_t componentStart) {
    if (componentStart >= text.size()) {
        return;
    }
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(text.c_str(), &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return;
    }
    os::FindClose(search);
    if (data.cFileName[0] != '\0') {
        text.replace(componentStart, std::string::npos, data.cFileName);
    }
}

Chaine LongName(const char* path) {
    Chaine name;
    char buffer[260];
    unsigned int length = TranslateIntoLongName(path, buffer, sizeof buffer);
    if (length < sizeof buffer) {
        return Chaine(buffer);
    }
    char* big = name.SetLength(static_cast<int>(length));
    TranslateIntoLongName(path, big, length + 1);
    return name;
}

}  // namespace

unsigned int TranslateIntoLongName(const char* path, char* out, unsigned int size) {
    std::string text;
    std::size_t componentStart = 0;
    bool first = true;
    for (const char* p = path != nullptr ? path : ""; *p != '\0'; ++p) {
        if (IsSeparator(*p)) {
            // The first component, the drive, is taken as it is written.
            if (!first) {
                LookUp(text, componentStart);
            }
            first = false;
            text += *p;
            componentStart = text.size();
        } else {
            text += *p;
        }
    }
    if (!first) {
        LookUp(text, componentStart);
    }
    const auto length = static_cast<unsigned int>(text.size());
    if (out != nullptr && size > length) {
        std::memcpy(out, text.c_str(), length + 1);
    }
    return length;
}

int AreEqualsFiles(const char* first, const char* second) {
    return LongName(first).CompareNoCase(LongName(second)) == 0 ? 1 : 0;
}
