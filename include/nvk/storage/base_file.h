// The virtual file that the record and index engines work on: a thin object
// over an operating-system file handle. Sizes and offsets are 32-bit.
#pragma once

#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

class NVKUTIL_EXPORT EBaseFile {
public:
    // Open modes: bits of the `mode` argument of Open.
    static constexpr int kRead = 1;
    static constexpr int kWrite = 2;
    static constexpr int kCreate = 16;

    EBaseFile();
    // Opens an existing file for reading and writing, shared; on failure the
    // object stays closed and nothing is reported.
    explicit EBaseFile(const char* name);
    // Copies share the handle: the first copy to close it invalidates the other.
    EBaseFile(const EBaseFile&) = default;
    EBaseFile& operator=(const EBaseFile&) = default;

    // The order of these virtual operations is part of the class's interface.
    virtual ~EBaseFile();
    virtual void Close();
    virtual void Flush();
    virtual void Lock(unsigned long);
    virtual int Open(const char* name, int mode, int share);
    virtual int Read(void* buffer, unsigned long size);
    virtual unsigned long Seek(long offset, unsigned long whence);
    virtual void SetTaille(unsigned long size);
    virtual unsigned long Taille() const;
    virtual void UnLock(unsigned long);
    virtual int Write(void* buffer, unsigned long size);
    virtual int GetLigne(char* buffer, unsigned long size);

    unsigned long GetPosition() const { return const_cast<EBaseFile*>(this)->Seek(0, 1); }
    unsigned long SeekToBegin() { return Seek(0, 0); }
    unsigned long SeekToEnd() { return Seek(0, 2); }
    nvk::os::HANDLE Handle() const { return m_Handle; }
    bool IsOpen() const { return m_Handle != nvk::os::INVALID_HANDLE_VALUE; }

    static void Remove(const char* name);
    static void Rename(const char* from, const char* to);

protected:
    // INVALID_HANDLE_VALUE (all bits set) when no file is open.
    nvk::os::HANDLE m_Handle;
};
