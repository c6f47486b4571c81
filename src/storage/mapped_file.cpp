#include "storage/mapped_file.h"

#include <algorithm>

#include "os/api/sync.h"

namespace nvk {

MappedFile::~MappedFile() {
    for (Window& window : m_Windows) {
        Unmap(window);
    }
}

void MappedFile::Unmap(Window& window) {
    if (window.view != nullptr) {
        os::UnmapViewOfFile(window.view);
    }
    window = Window{};
}

char* MappedFile::At(std::uint64_t offset, std::uint32_t size, std::uint64_t limit) {
    if (m_Unmappable || size > kOverlap || offset + size > limit || offset + size < offset) {
        return nullptr;
    }
    const std::uint64_t number = offset / kStep;
    const std::uint64_t start = number * kStep;
    if (number < m_Slot.size() && m_Slot[number] >= 0) {
        Window& window = m_Windows[m_Slot[number]];
        window.used = ++m_Clock;
        if (offset + size <= start + window.length) {
            return window.view + (offset - start);
        }
        // The file has grown since the window was mapped: map it again.
        m_Slot[number] = -1;
        char* view = Map(window, number, limit);
        return view != nullptr ? view + (offset - start) : nullptr;
    }
    Window& window =
        *std::min_element(m_Windows.begin(), m_Windows.end(),
                          [](const Window& a, const Window& b) { return a.used < b.used; });
    char* view = Map(window, number, limit);
    return view != nullptr ? view + (offset - start) : nullptr;
}

// A view of the file as it now is: a file shorter than `limit` says (cut by
// another program) gives no view, and its bytes are read through the file.
char* MappedFile::Map(Window& window, std::uint64_t number, std::uint64_t limit) {
    if (window.length != 0 && window.number < m_Slot.size()) {
        m_Slot[window.number] = -1;
    }
    Unmap(window);
    const std::uint64_t start = number * kStep;
    const std::uint64_t length = std::min<std::uint64_t>(kStep + kOverlap, limit - start);
    os::HANDLE section = os::CreateFileMappingA(m_File, nullptr, os::PAGE_READWRITE, 0, 0, nullptr);
    if (section == nullptr) {
        m_Unmappable = true;
        return nullptr;
    }
    void* view = os::MapViewOfFile(section, os::FILE_MAP_WRITE, static_cast<os::DWORD>(start >> 32),
                                   static_cast<os::DWORD>(start), static_cast<os::SIZE_T>(length));
    os::CloseHandle(section);
    if (view == nullptr) {
        return nullptr;
    }
    window.number = number;
    window.length = length;
    window.view = static_cast<char*>(view);
    window.used = ++m_Clock;
    if (number >= m_Slot.size()) {
        m_Slot.resize(number + 1, -1);
    }
    m_Slot[number] = static_cast<std::int8_t>(&window - m_Windows.data());
    return window.view;
}

}  // namespace nvk
