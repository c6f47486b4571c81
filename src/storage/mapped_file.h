// Windows of a file mapped shared for reading and writing. The system keeps
// one copy of a file's pages: what is read here is what the file holds at
// that moment, whoever wrote it and however, and what is written here is in
// the file at once for every other reader, as a write of the file would be.
// At most kWindows windows are mapped at a time, whatever the file's size.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "nvk/os/types.h"

namespace nvk {

class MappedFile {
public:
    // Windows start every kStep bytes and run kOverlap bytes into the next
    // one, so that any range of up to kOverlap bytes lies in one window.
    static constexpr std::uint64_t kStep = 1u << 20;
    static constexpr std::uint32_t kOverlap = 64u << 10;
    static constexpr int kWindows = 64;

    explicit MappedFile(nvk::os::HANDLE file) : m_File(file) {}
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    // The `size` bytes at `offset`, if they lie within the first `limit`
    // bytes of the file and a window can be mapped over them; null otherwise,
    // and the caller goes through the file.
    char* At(std::uint64_t offset, std::uint32_t size, std::uint64_t limit);

private:
    struct Window {
        std::uint64_t number = 0;  // its start is number * kStep
        std::uint64_t length = 0;  // 0: not mapped
        char* view = nullptr;
        std::uint64_t used = 0;
    };

    char* Map(Window& window, std::uint64_t number, std::uint64_t limit);
    static void Unmap(Window& window);

    nvk::os::HANDLE m_File;
    std::array<Window, kWindows> m_Windows{};
    std::vector<std::int8_t> m_Slot;  // by window number: its slot, or -1
    std::uint64_t m_Clock = 0;
    bool m_Unmappable = false;  // the system maps no section of this file
};

}  // namespace nvk
