// The profile functions over the layer's own files, so that paths, case and
// share modes are those of every other file call.
#include "os/api/profile.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "os/api/directory.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/sync.h"
#include "os/posix/profile_text.h"

namespace nvk::os {

namespace {

constexpr char kWindowsFolder[] = "C:\\Windows";
// A file that another writer holds is tried again for about a second.
constexpr int kAttempts = 100;
constexpr DWORD kRetryMilliseconds = 10;

bool HasFolder(std::string_view name) {
    return name.find_first_of("\\/:") != std::string_view::npos;
}

// Where a name without a folder lives; a null name is the system's own file.
std::string PathOf(LPCSTR fileName) {
    const std::string_view name = fileName != nullptr ? fileName : "win.ini";
    return HasFolder(name) ? std::string(name)
                           : std::string(kWindowsFolder) + "\\" + std::string(name);
}

HANDLE Open(const std::string& path, DWORD access, DWORD share, DWORD disposition) {
    for (int attempt = 1;; ++attempt) {
        HANDLE file = CreateFileA(path.c_str(), access, share, nullptr, disposition,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_SHARING_VIOLATION ||
            attempt == kAttempts) {
            return file;
        }
        Sleep(kRetryMilliseconds);
    }
}

bool ReadAll(HANDLE file, std::string& bytes) {
    DWORD high = 0;
    const DWORD size = GetFileSize(file, &high);
    if (high != 0 || size == 0xFFFFFFFF) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    bytes.resize(size);
    DWORD read = 0;
    if (!ReadFile(file, bytes.data(), size, &read, nullptr)) {
        return false;
    }
    bytes.resize(read);
    return true;
}

// The file's text; none, with the last error set, when it can't be read.
std::optional<posix::ProfileText> Load(LPCSTR fileName) {
    HANDLE file =
        Open(PathOf(fileName), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
    if (file == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    std::string bytes;
    const bool read = ReadAll(file, bytes);
    CloseHandle(file);
    if (!read) {
        return std::nullopt;
    }
    SetLastError(ERROR_SUCCESS);
    return posix::ProfileText(bytes);
}

// Runs `change` on the text of the file, held alone from the read to the
// write, and writes it back when it changed. A missing file is made only
// when `create` says so; otherwise there is nothing to change.
BOOL Modify(LPCSTR fileName, bool create, const std::function<bool(posix::ProfileText&)>& change) {
    const std::string path = PathOf(fileName);
    if (create && (fileName == nullptr || !HasFolder(fileName))) {
        // The Windows folder is always there on Windows; here it is made
        // on the first write.
        CreateDirectoryA(kWindowsFolder, nullptr);
    }
    HANDLE file = Open(path, GENERIC_READ | GENERIC_WRITE, 0, create ? OPEN_ALWAYS : OPEN_EXISTING);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        return !create && (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND);
    }
    std::string bytes;
    bool done = ReadAll(file, bytes);
    if (done) {
        posix::ProfileText text(bytes);
        if (change(text)) {
            bytes = text.Bytes();
            DWORD written = 0;
            done = SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 &&
                   WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                             nullptr) &&
                   written == bytes.size() && SetEndOfFile(file);
        }
    }
    const DWORD error = GetLastError();
    CloseHandle(file);
    SetLastError(done ? ERROR_SUCCESS : error);
    return done ? TRUE : FALSE;
}

DWORD CopyText(std::string_view text, LPSTR buffer, DWORD size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return static_cast<DWORD>(length);
}

// Names each ending with a zero, then a second zero. What doesn't fit is
// cut, and the list still ends with two zeros; as on Windows, a list that
// would fill the buffer exactly is cut too.
DWORD CopyList(const std::vector<std::string>& names, LPSTR buffer, DWORD size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    if (size == 1) {
        buffer[0] = '\0';
        return 0;
    }
    std::size_t used = 0;
    for (const std::string& name : names) {
        if (used + name.size() + 2 >= size) {
            std::memcpy(buffer + used, name.data(), size - 2 - used);
            buffer[size - 2] = '\0';
            buffer[size - 1] = '\0';
            return size - 2;
        }
        std::memcpy(buffer + used, name.data(), name.size());
        used += name.size();
        buffer[used++] = '\0';
    }
    buffer[used] = '\0';
    if (used == 0) {
        buffer[1] = '\0';
    }
    return static_cast<DWORD>(used);
}

std::string_view Unquoted(std::string_view value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front()) {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

}  // namespace

DWORD GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR defaultValue, LPSTR buffer,
                               DWORD size, LPCSTR fileName) {
    const std::optional<posix::ProfileText> text = Load(fileName);
    if (section == nullptr) {
        return CopyList(text ? text->SectionNames() : std::vector<std::string>{}, buffer, size);
    }
    if (key == nullptr) {
        return CopyList(text ? text->Keys(section) : std::vector<std::string>{}, buffer, size);
    }
    const std::optional<std::string> value = text ? text->Value(section, key) : std::nullopt;
    if (value) {
        return CopyText(Unquoted(*value), buffer, size);
    }
    std::string_view fallback = defaultValue != nullptr ? defaultValue : "";
    fallback = fallback.substr(0, fallback.find_last_not_of(" \t") + 1);
    return CopyText(fallback, buffer, size);
}

UINT GetPrivateProfileIntA(LPCSTR section, LPCSTR key, int defaultValue, LPCSTR fileName) {
    const std::optional<posix::ProfileText> text = Load(fileName);
    const std::optional<std::string> value =
        text && section != nullptr && key != nullptr ? text->Value(section, key) : std::nullopt;
    std::string_view digits = value ? Unquoted(*value) : std::string_view{};
    if (digits.empty()) {
        return static_cast<UINT>(defaultValue);
    }
    digits.remove_prefix(std::min(digits.find_first_not_of(" \t"), digits.size()));
    const bool negative = !digits.empty() && digits.front() == '-';
    if (!digits.empty() && (digits.front() == '-' || digits.front() == '+')) {
        digits.remove_prefix(1);
    }
    UINT number = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9') {
            break;
        }
        number = number * 10 + static_cast<UINT>(c - '0');
    }
    return negative ? 0 : number;
}

DWORD GetPrivateProfileSectionA(LPCSTR section, LPSTR buffer, DWORD size, LPCSTR fileName) {
    const std::optional<posix::ProfileText> text = Load(fileName);
    return CopyList(
        text && section != nullptr ? text->SectionLines(section) : std::vector<std::string>{},
        buffer, size);
}

DWORD GetPrivateProfileSectionNamesA(LPSTR buffer, DWORD size, LPCSTR fileName) {
    return GetPrivateProfileStringA(nullptr, nullptr, nullptr, buffer, size, fileName);
}

BOOL WritePrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR fileName) {
    if (section == nullptr) {
        if (key == nullptr && value == nullptr) {
            return TRUE;
        }
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (key == nullptr) {
        return Modify(fileName, false,
                      [&](posix::ProfileText& text) { return text.DeleteSection(section); });
    }
    if (value == nullptr) {
        return Modify(fileName, false,
                      [&](posix::ProfileText& text) { return text.DeleteKey(section, key); });
    }
    return Modify(fileName, true,
                  [&](posix::ProfileText& text) { return text.Set(section, key, value); });
}

BOOL WritePrivateProfileSectionA(LPCSTR section, LPCSTR lines, LPCSTR fileName) {
    if (section == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (lines == nullptr) {
        return Modify(fileName, false,
                      [&](posix::ProfileText& text) { return text.DeleteSection(section); });
    }
    std::vector<std::string> entries;
    for (const char* line = lines; *line != '\0'; line += std::strlen(line) + 1) {
        entries.emplace_back(line);
    }
    return Modify(fileName, true,
                  [&](posix::ProfileText& text) { return text.ReplaceSection(section, entries); });
}

}  // namespace nvk::os
