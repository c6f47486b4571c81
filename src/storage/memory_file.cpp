#include "nvk/storage/memory_file.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "os/api/memory.h"

namespace os = nvk::os;

namespace {

constexpr std::int32_t kInitialCapacity = 8192;

char* Allocate(std::int64_t size) {
    return static_cast<char*>(os::VirtualAlloc(nullptr, static_cast<os::SIZE_T>(size),
                                               os::MEM_COMMIT, os::PAGE_READWRITE));
}

}  // namespace

EMemoryFile::EMemoryFile() : m_Taille(0), m_Position(0), m_Capacity(0) {}

EMemoryFile::EMemoryFile(const char*) : EMemoryFile() {}

EMemoryFile::~EMemoryFile() {
    EMemoryFile::Close();
}

void EMemoryFile::Close() {
    if (IsOpen()) {
        os::VirtualFree(m_Handle, 0, os::MEM_RELEASE);
    }
    m_Handle = os::INVALID_HANDLE_VALUE;
}

// A reopened file starts empty: the length and position of the closed one
// would lie over the fresh block, and reads would run past it.
int EMemoryFile::Open(const char*, int, int) {
    m_Taille = 0;
    m_Position = 0;
    m_Capacity = kInitialCapacity;
    char* block = Allocate(kInitialCapacity);
    m_Handle = block != nullptr ? static_cast<os::HANDLE>(block) : os::INVALID_HANDLE_VALUE;
    return block != nullptr ? 1 : 0;
}

// All or nothing: a read that would pass the length copies nothing.
int EMemoryFile::Read(void* buffer, unsigned long size) {
    if (!IsOpen()) {
        return 0;
    }
    if (static_cast<std::uint64_t>(m_Position) + size > static_cast<std::uint64_t>(m_Taille)) {
        return 0;
    }
    if (size != 0) {
        std::memcpy(buffer, Block() + m_Position, size);
    }
    m_Position += static_cast<std::int32_t>(size);
    return 1;
}

// Never extends the file: the result is clamped to [0, m_Taille].
unsigned long EMemoryFile::Seek(long offset, unsigned long whence) {
    if (!IsOpen()) {
        return 0;
    }
    std::int64_t target = m_Position;
    if (whence == 0) {
        target = offset;
    } else if (whence == 1) {
        target = static_cast<std::int64_t>(m_Position) + offset;
    } else if (whence == 2) {
        target = static_cast<std::int64_t>(m_Taille) + offset;
    }
    if (target < 0) {
        target = 0;
    }
    if (target > m_Taille) {
        target = m_Taille;
    }
    m_Position = static_cast<std::int32_t>(target);
    return static_cast<unsigned long>(m_Position);
}

// The block grows to hold the new length, so that reads inside it stay inside
// the block; the bytes it adds are zeros, as a file extended by its end. A
// length the block can't grow to is cut to the block.
void EMemoryFile::SetTaille(unsigned long size) {
    if (!IsOpen()) {
        return;
    }
    std::int64_t wanted = static_cast<std::int64_t>(std::min<unsigned long>(size, 0x7FFFFFFF));
    if (!Reserve(wanted + 1)) {
        wanted = m_Capacity;
    }
    if (wanted > m_Taille) {
        std::memset(Block() + m_Taille, 0, static_cast<std::size_t>(wanted - m_Taille));
    }
    m_Taille = static_cast<std::int32_t>(wanted);
}

unsigned long EMemoryFile::Taille() const {
    return IsOpen() ? static_cast<unsigned long>(m_Taille) : 0;
}

// The block doubles until it holds `needed` bytes, and never shrinks; on
// failure it stays as it was.
bool EMemoryFile::Reserve(std::int64_t needed) {
    if (needed <= m_Capacity) {
        return true;
    }
    std::int64_t capacity = m_Capacity;
    while (capacity < needed) {
        capacity *= 2;
    }
    if (capacity > std::numeric_limits<std::int32_t>::max()) {
        return false;
    }
    char* block = Allocate(capacity);
    if (block == nullptr) {
        return false;
    }
    std::memcpy(block, Block(), static_cast<std::size_t>(m_Taille));
    os::VirtualFree(m_Handle, 0, os::MEM_RELEASE);
    m_Handle = block;
    m_Capacity = static_cast<std::int32_t>(capacity);
    return true;
}

// One spare byte is always kept past the data.
int EMemoryFile::Write(void* buffer, unsigned long size) {
    if (!IsOpen()) {
        return 0;
    }
    if (!Reserve(static_cast<std::int64_t>(size) + 1 + m_Position)) {
        return 0;
    }
    if (size != 0) {
        std::memcpy(Block() + m_Position, buffer, size);
    }
    m_Position += static_cast<std::int32_t>(size);
    if (m_Position >= m_Taille) {
        m_Taille = m_Position;
    }
    return 1;
}
