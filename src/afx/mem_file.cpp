#include "nvk/afx/mem_file.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "nvk/afx/exceptions.h"

IMPLEMENT_DYNAMIC(CMemFile, CFile)

namespace {

// The largest block a process can be asked for; beyond it the growth
// arithmetic below would wrap and the block come out smaller than the size.
constexpr std::size_t kLargestSize = PTRDIFF_MAX / 2;

}  // namespace

CMemFile::CMemFile(unsigned growBytes) : m_nGrowBytes(growBytes) {}

CMemFile::CMemFile(std::uint8_t* buffer, unsigned size, unsigned growBytes) : m_nGrowBytes(0) {
    Attach(buffer, size, growBytes);
}

CMemFile::~CMemFile() {
    Close();
}

void CMemFile::Attach(std::uint8_t* buffer, unsigned size, unsigned growBytes) {
    Close();
    m_lpBuffer = buffer;
    m_nBufferSize = buffer != nullptr ? size : 0;
    m_nFileSize = growBytes == 0 ? m_nBufferSize : 0;
    m_nGrowBytes = growBytes;
    m_bAutoDelete = false;
}

std::uint8_t* CMemFile::Detach() {
    std::uint8_t* buffer = m_lpBuffer;
    Reset();
    return buffer;
}

bool CMemFile::Open(const char* /*fileName*/, unsigned /*openFlags*/, CFileException* /*error*/) {
    AfxThrowNotSupportedException();
}

unsigned CMemFile::Read(void* buffer, unsigned count) {
    if (m_nPosition >= m_nFileSize) {
        return 0;
    }
    const std::size_t n = std::min<std::size_t>(count, m_nFileSize - m_nPosition);
    std::memcpy(buffer, m_lpBuffer + m_nPosition, n);
    m_nPosition += n;
    return static_cast<unsigned>(n);
}

void CMemFile::Write(const void* buffer, unsigned count) {
    if (count == 0) {
        return;
    }
    if (m_nPosition > kLargestSize - count) {
        AfxThrowMemoryException();
    }
    const std::size_t end = m_nPosition + count;
    Grow(end);
    if (m_nPosition > m_nFileSize) {
        std::memset(m_lpBuffer + m_nFileSize, 0, m_nPosition - m_nFileSize);
    }
    std::memcpy(m_lpBuffer + m_nPosition, buffer, count);
    m_nPosition = end;
    m_nFileSize = std::max(m_nFileSize, end);
}

std::uint64_t CMemFile::Seek(std::int64_t offset, unsigned from) {
    std::int64_t base = 0;
    if (from == current) {
        base = static_cast<std::int64_t>(m_nPosition);
    } else if (from == end) {
        base = static_cast<std::int64_t>(m_nFileSize);
    }
    const std::int64_t target = base + offset;
    if (target < 0 || from > end) {
        AfxThrowFileException(CFileException::badSeek);
    }
    m_nPosition = static_cast<std::size_t>(target);
    return m_nPosition;
}

void CMemFile::SetLength(std::uint64_t length) {
    if (length > kLargestSize) {
        AfxThrowMemoryException();
    }
    const auto size = static_cast<std::size_t>(length);
    Grow(size);
    if (size > m_nFileSize) {
        std::memset(m_lpBuffer + m_nFileSize, 0, size - m_nFileSize);
    }
    m_nFileSize = size;
    m_nPosition = std::min(m_nPosition, size);
}

void CMemFile::Close() {
    if (m_bAutoDelete) {
        std::free(m_lpBuffer);
    }
    Reset();
}

void CMemFile::Reset() {
    m_lpBuffer = nullptr;
    m_nBufferSize = 0;
    m_nFileSize = 0;
    m_nPosition = 0;
    m_bAutoDelete = true;
}

void CMemFile::Grow(std::size_t size) {
    if (size <= m_nBufferSize) {
        return;
    }
    if (m_nGrowBytes == 0 || size > kLargestSize) {
        AfxThrowMemoryException();
    }
    const std::size_t steps = (size + m_nGrowBytes - 1) / m_nGrowBytes;
    const std::size_t wanted = std::max(steps * m_nGrowBytes, m_nBufferSize * 2);
    auto* block = static_cast<std::uint8_t*>(std::realloc(m_lpBuffer, wanted));
    if (block == nullptr) {
        AfxThrowMemoryException();
    }
    m_lpBuffer = block;
    m_nBufferSize = wanted;
}
