// The version functions. The block that GetFileVersionInfoA fills is the
// resource's tree followed by room where VerQueryValueA puts the ANSI form
// of a text value: a value at offset `o` of the tree has its text at `o / 2`
// of that room, so that texts never overlap and a query needs no state.
#include "os/api/version.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "os/api/error.h"
#include "os/api/nls.h"
#include "os/posix/version_image.h"
#include "os/posix/version_tree.h"

namespace nvk::os {

namespace {

DWORD Align(DWORD size) {
    return (size + 3) & ~DWORD{3};
}

// Where the room for texts begins in a block whose tree has `tree` bytes.
DWORD RoomOffset(DWORD tree) {
    return Align(tree);
}

DWORD BlockSize(DWORD tree) {
    return RoomOffset(tree) + Align(tree / 2 + 2);
}

bool ReadTree(LPCSTR fileName, std::vector<BYTE>& tree) {
    if (fileName == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    if (!posix::ReadVersionResource(fileName, tree)) {
        return false;
    }
    // The root states the tree's length: make it the length that was read.
    const auto length = static_cast<WORD>(tree.size());
    std::memcpy(tree.data(), &length, sizeof length);
    return true;
}

}  // namespace

DWORD GetFileVersionInfoSizeA(LPCSTR fileName, LPDWORD handle) {
    if (handle != nullptr) {
        *handle = 0;
    }
    std::vector<BYTE> tree;
    if (!ReadTree(fileName, tree)) {
        return 0;
    }
    SetLastError(ERROR_SUCCESS);
    return BlockSize(static_cast<DWORD>(tree.size()));
}

BOOL GetFileVersionInfoA(LPCSTR fileName, DWORD /*handle*/, DWORD length, LPVOID data) {
    std::vector<BYTE> tree;
    if (data == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (!ReadTree(fileName, tree)) {
        return FALSE;
    }
    // A short buffer keeps the part of the tree that fits with its room.
    DWORD size = static_cast<DWORD>(tree.size());
    while (size >= 6 && BlockSize(size) > length) {
        size = size > 4 ? (size - 4) & ~DWORD{3} : 0;
    }
    auto* block = static_cast<BYTE*>(data);
    if (size < 6) {
        // Windows truncates the information to the buffer, however short,
        // and succeeds; an empty root keeps the queries inside it.
        std::memcpy(block, tree.data(), std::min<std::size_t>(length, tree.size()));
        if (length >= 2) {
            std::memset(block, 0, 2);
        }
        SetLastError(ERROR_SUCCESS);
        return TRUE;
    }
    std::memcpy(block, tree.data(), size);
    const auto root = static_cast<WORD>(size);
    std::memcpy(block, &root, sizeof root);
    std::memset(block + size, 0, BlockSize(size) - size);
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL VerQueryValueA(LPCVOID block, LPCSTR subBlock, LPVOID* buffer, UINT* length) {
    if (block == nullptr || subBlock == nullptr || buffer == nullptr || length == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    // The room for texts is the caller's block, writable as on Windows.
    auto* bytes = static_cast<BYTE*>(const_cast<void*>(block));
    WORD size = 0;
    std::memcpy(&size, bytes, sizeof size);
    posix::VersionNode node;
    if (!posix::FindVersionNode(bytes, size, subBlock, node)) {
        SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
        return FALSE;
    }
    const std::string_view path(subBlock);
    const bool root = path.find_first_not_of('\\') == std::string_view::npos;
    if (root) {
        if (node.valueBytes < sizeof(VS_FIXEDFILEINFO)) {
            SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
            return FALSE;
        }
        *buffer = bytes + node.valueOffset;
        *length = sizeof(VS_FIXEDFILEINFO);
        return TRUE;
    }
    if (node.type != 1) {
        *buffer = bytes + node.valueOffset;
        *length = static_cast<UINT>(node.valueBytes);
        return TRUE;
    }
    std::u16string text(node.valueBytes / 2, u'\0');
    std::memcpy(text.data(), bytes + node.valueOffset, text.size() * 2);
    text.resize(std::min(text.size(), text.find(u'\0')));
    auto* ansi = reinterpret_cast<char*>(bytes + RoomOffset(size) + node.valueOffset / 2);
    const int converted =
        text.empty() ? 0
                     : WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                                           ansi, static_cast<int>(text.size()), nullptr, nullptr);
    ansi[std::max(converted, 0)] = '\0';
    *buffer = ansi;
    *length = node.valueLength == 0 ? 0 : static_cast<UINT>(std::max(converted, 0)) + 1;
    return TRUE;
}

}  // namespace nvk::os
