// A file held in one growable block of memory, for engines that work without a
// file name. The block's address lives in m_Handle.
#pragma once

#include <cstdint>

#include "nvk/nvkutil_export.h"
#include "nvk/storage/base_file.h"

class NVKUTIL_EXPORT EMemoryFile : public EBaseFile {
public:
    EMemoryFile();
    // The name is ignored: a memory file has none.
    explicit EMemoryFile(const char* name);
    EMemoryFile(const EMemoryFile&) = default;
    EMemoryFile& operator=(const EMemoryFile&) = default;

    ~EMemoryFile() override;
    void Close() override;
    void Flush() override {}
    void Lock(unsigned long) override {}
    // Takes a fresh block of 8192 bytes and starts an empty file; the
    // arguments are ignored.
    int Open(const char* name, int mode, int share) override;
    int Read(void* buffer, unsigned long size) override;
    unsigned long Seek(long offset, unsigned long whence) override;
    // Grows the block when the length passes it.
    void SetTaille(unsigned long size) override;
    unsigned long Taille() const override;
    void UnLock(unsigned long) override {}
    int Write(void* buffer, unsigned long size) override;

    static void Remove(const char*) {}
    static void Rename(const char*, const char*) {}

protected:
    std::int32_t m_Taille;
    std::int32_t m_Position;
    std::int32_t m_Capacity;

private:
    char* Block() const { return static_cast<char*>(m_Handle); }
    bool Reserve(std::int64_t needed);
};
