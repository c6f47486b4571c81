// CMemFile: a file held in a memory block. It grows by whole steps of
// `growBytes`, at least doubling, and zero-fills the bytes a write or
// SetLength skips over. A block given to Attach with a growth step of 0 is a
// fixed window: writing past its end throws CMemoryException*. With a growth
// step the block is moved with realloc, so it must come from malloc; Detach
// hands the current block to the caller, to be freed with free().
#pragma once

#include <cstddef>
#include <cstdint>

#include "nvk/afx/file.h"
#include "nvk/nvkafx_export.h"

class NVKAFX_EXPORT CMemFile : public CFile {
    DECLARE_DYNAMIC(CMemFile)

public:
    explicit CMemFile(unsigned growBytes = 1024);
    CMemFile(std::uint8_t* buffer, unsigned size, unsigned growBytes = 0);
    ~CMemFile() override;

    // A fixed block (growBytes 0) is the file's contents; a growable one
    // starts as an empty file.
    void Attach(std::uint8_t* buffer, unsigned size, unsigned growBytes = 0);
    std::uint8_t* Detach();

    // A memory file has no name to open.
    bool Open(const char* fileName, unsigned openFlags, CFileException* error = nullptr) override;
    unsigned Read(void* buffer, unsigned count) override;
    void Write(const void* buffer, unsigned count) override;
    // A position before the start throws CFileException* (badSeek); one
    // beyond the end is allowed, and a later write fills the gap with zeros.
    std::uint64_t Seek(std::int64_t offset, unsigned from) override;
    std::uint64_t GetPosition() const override { return m_nPosition; }
    std::uint64_t GetLength() const override { return m_nFileSize; }
    void SetLength(std::uint64_t length) override;
    void Flush() override {}
    void Close() override;
    void Abort() override { Close(); }

private:
    void Reset();
    // Makes the block hold at least `size` bytes.
    void Grow(std::size_t size);

    std::uint8_t* m_lpBuffer = nullptr;
    std::size_t m_nBufferSize = 0;
    std::size_t m_nFileSize = 0;
    std::size_t m_nPosition = 0;
    unsigned m_nGrowBytes;
    // Whether the block is ours to free at Close.
    bool m_bAutoDelete = true;
};
