#include "os/posix/version_image.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/sync.h"
#include "os/api/version.h"

namespace nvk::os::posix {

namespace {

constexpr WORD kVersionType = 16;  // RT_VERSION
// A VS_VERSIONINFO states its length in a 16-bit word.
constexpr DWORD kMostResource = 0xFFFF;
// Section headers and names read at most: far more than any real module has.
constexpr DWORD kMostTable = 1 << 20;

class Image {
public:
    explicit Image(LPCSTR fileName)
        : file_(CreateFileA(fileName, GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~Image() {
        if (file_ != INVALID_HANDLE_VALUE) {
            CloseHandle(file_);
        }
    }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    bool opened() const { return file_ != INVALID_HANDLE_VALUE; }

    // Exactly `size` bytes at `offset`, or false.
    bool Read(ULONGLONG offset, DWORD size, void* out) {
        LONG high = static_cast<LONG>(offset >> 32);
        SetLastError(ERROR_SUCCESS);
        if (offset >> 63 != 0 || (SetFilePointer(file_, static_cast<LONG>(offset & 0xFFFFFFFF),
                                                 &high, FILE_BEGIN) == 0xFFFFFFFF &&
                                  GetLastError() != ERROR_SUCCESS)) {
            return false;
        }
        DWORD read = 0;
        return ReadFile(file_, out, size, &read, nullptr) && read == size;
    }
    bool Read(ULONGLONG offset, DWORD size, std::vector<BYTE>& out) {
        out.resize(size);
        return Read(offset, size, out.data());
    }

private:
    HANDLE file_;
};

template <typename T>
T Get(const std::vector<BYTE>& bytes, std::size_t offset) {
    T value{};
    if (offset <= bytes.size() && sizeof(T) <= bytes.size() - offset) {
        std::memcpy(&value, bytes.data() + offset, sizeof(T));
    }
    return value;
}

// Windows answers so for any file in which it finds no resources, whether a
// damaged image or no image at all.
constexpr DWORD kNoResources = ERROR_RESOURCE_DATA_NOT_FOUND;

bool Fail(DWORD error) {
    SetLastError(error);
    return false;
}

// The resource itself, once its place in the file is known: as long as its
// root says, and no longer than the place it was found in.
bool ReadResource(Image& image, ULONGLONG offset, DWORD room, std::vector<BYTE>& resource) {
    WORD length = 0;
    if (room < 6 || !image.Read(offset, sizeof length, &length) || length < 6) {
        return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    if (!image.Read(offset, std::min<DWORD>(length, room), resource)) {
        return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    return true;
}

// The section that holds a relative virtual address: the file offset of the
// address, and the bytes of the section from it on.
bool MapAddress(const std::vector<BYTE>& sections, DWORD count, DWORD address, ULONGLONG& offset,
                DWORD& room) {
    for (DWORD i = 0; i < count; ++i) {
        const std::size_t at = i * 40;
        const DWORD virtualSize = Get<DWORD>(sections, at + 8);
        const DWORD virtualAddress = Get<DWORD>(sections, at + 12);
        const DWORD rawSize = Get<DWORD>(sections, at + 16);
        const DWORD rawOffset = Get<DWORD>(sections, at + 20);
        const DWORD size = std::max(virtualSize, rawSize);
        if (address >= virtualAddress && address - virtualAddress < size) {
            const DWORD into = address - virtualAddress;
            if (into >= rawSize) {
                return false;
            }
            offset = ULONGLONG{rawOffset} + into;
            room = rawSize - into;
            return true;
        }
    }
    return false;
}

// One level of the resource directory: the entry with `id`, or the first
// entry when `id` is 0. Gives its offset field.
bool DirectoryEntry(Image& image, ULONGLONG root, DWORD rootRoom, DWORD directory, WORD id,
                    DWORD& target) {
    std::vector<BYTE> head;
    if (directory > rootRoom || rootRoom - directory < 16 ||
        !image.Read(root + directory, 16, head)) {
        return false;
    }
    const DWORD count = DWORD{Get<WORD>(head, 12)} + Get<WORD>(head, 14);
    const DWORD available = (rootRoom - directory - 16) / 8;
    std::vector<BYTE> entries;
    if (!image.Read(root + directory + 16, std::min(count, available) * 8, entries)) {
        return false;
    }
    for (std::size_t at = 0; at < entries.size(); at += 8) {
        const DWORD name = Get<DWORD>(entries, at);
        if (id == 0 || name == id) {
            target = Get<DWORD>(entries, at + 4);
            return true;
        }
    }
    return false;
}

bool ReadPe(Image& image, DWORD headerOffset, std::vector<BYTE>& resource) {
    std::vector<BYTE> header;
    if (!image.Read(headerOffset, 24, header) || Get<DWORD>(header, 0) != 0x00004550) {
        return Fail(kNoResources);
    }
    const DWORD sectionCount = Get<WORD>(header, 6);
    const DWORD optionalSize = Get<WORD>(header, 20);
    std::vector<BYTE> optional;
    if (!image.Read(headerOffset + 24, optionalSize, optional)) {
        return Fail(kNoResources);
    }
    const WORD magic = Get<WORD>(optional, 0);
    const std::size_t directories = magic == 0x20B ? 112 : 96;
    if ((magic != 0x10B && magic != 0x20B) || Get<DWORD>(optional, directories - 4) < 3 ||
        optionalSize < directories + 3 * 8) {
        return Fail(kNoResources);
    }
    const DWORD resourceAddress = Get<DWORD>(optional, directories + 2 * 8);
    std::vector<BYTE> sections;
    ULONGLONG root = 0;
    DWORD rootRoom = 0;
    if (resourceAddress == 0 ||
        !image.Read(headerOffset + 24 + optionalSize, sectionCount * 40, sections) ||
        !MapAddress(sections, sectionCount, resourceAddress, root, rootRoom)) {
        return Fail(kNoResources);
    }
    // Type, name, language: the version type, then the first of each, as the
    // version functions of the platform take them. Offsets are within the
    // resource section, with the high bit marking a directory.
    DWORD target = 0;
    for (WORD id : {kVersionType, WORD{0}, WORD{0}}) {
        const bool first = id == kVersionType;
        if ((!first && (target & 0x80000000) == 0) ||
            !DirectoryEntry(image, root, rootRoom, target & 0x7FFFFFFF, id, target)) {
            return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
        }
    }
    std::vector<BYTE> data;
    ULONGLONG offset = 0;
    DWORD room = 0;
    if ((target & 0x80000000) != 0 || target > rootRoom || rootRoom - target < 16 ||
        !image.Read(root + target, 16, data) ||
        !MapAddress(sections, sectionCount, Get<DWORD>(data, 0), offset, room)) {
        return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    return ReadResource(image, offset, std::min({room, Get<DWORD>(data, 4), kMostResource}),
                        resource);
}

bool ReadElf(Image& image, const std::vector<BYTE>& ident, std::vector<BYTE>& resource) {
    const bool wide = ident[4] == 2;
    if ((ident[4] != 1 && !wide) || ident[5] != 1) {  // little-endian only
        return Fail(kNoResources);
    }
    std::vector<BYTE> header;
    if (!image.Read(0, wide ? 64 : 52, header)) {
        return Fail(kNoResources);
    }
    const ULONGLONG tableOffset = wide ? Get<ULONGLONG>(header, 40) : Get<DWORD>(header, 32);
    const DWORD entrySize = Get<WORD>(header, wide ? 58 : 46);
    const DWORD count = Get<WORD>(header, wide ? 60 : 48);
    const DWORD namesIndex = Get<WORD>(header, wide ? 62 : 50);
    std::vector<BYTE> table;
    if (entrySize < (wide ? 64u : 40u) || count == 0 || namesIndex >= count ||
        count * entrySize > kMostTable || !image.Read(tableOffset, count * entrySize, table)) {
        return Fail(kNoResources);
    }
    auto offsetOf = [&](DWORD i) {
        return wide ? Get<ULONGLONG>(table, i * entrySize + 24)
                    : Get<DWORD>(table, i * entrySize + 16);
    };
    auto sizeOf = [&](DWORD i) {
        return wide ? Get<ULONGLONG>(table, i * entrySize + 32)
                    : Get<DWORD>(table, i * entrySize + 20);
    };
    std::vector<BYTE> names;
    if (!image.Read(offsetOf(namesIndex),
                    static_cast<DWORD>(std::min<ULONGLONG>(sizeOf(namesIndex), kMostTable)),
                    names)) {
        return Fail(kNoResources);
    }
    const std::string wanted(kVersionSectionName);
    for (DWORD i = 0; i < count; ++i) {
        const DWORD name = Get<DWORD>(table, i * entrySize);
        const DWORD type = Get<DWORD>(table, i * entrySize + 4);
        constexpr DWORD kNoBits = 8;
        if (name < names.size() && type != kNoBits && names.size() - name > wanted.size() &&
            std::memcmp(names.data() + name, wanted.c_str(), wanted.size() + 1) == 0) {
            return ReadResource(image, offsetOf(i),
                                static_cast<DWORD>(std::min<ULONGLONG>(sizeOf(i), kMostResource)),
                                resource);
        }
    }
    return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
}

}  // namespace

bool ReadVersionResource(LPCSTR fileName, std::vector<BYTE>& resource) {
    Image image(fileName);
    if (!image.opened()) {
        return false;
    }
    std::vector<BYTE> ident;
    if (!image.Read(0, 64, ident)) {
        return Fail(kNoResources);
    }
    if (std::memcmp(ident.data(),
                    "\x7F"
                    "ELF",
                    4) == 0) {
        return ReadElf(image, ident, resource);
    }
    if (ident[0] == 'M' && ident[1] == 'Z') {
        return ReadPe(image, Get<DWORD>(ident, 0x3C), resource);
    }
    return Fail(kNoResources);
}

}  // namespace nvk::os::posix
