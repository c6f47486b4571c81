// CFile: a binary file over an OS-layer handle, and the base of the other
// file classes (CMemFile). Failures throw CFileException* with the cause of
// the OS error; Open reports into a caller's exception object instead.
#pragma once

#include <cstdint>

#include "nvk/afx/cstring.h"
#include "nvk/afx/object.h"
#include "nvk/nvkafx_export.h"
#include "nvk/os/types.h"

class CFileException;

class NVKAFX_EXPORT CFile : public CObject {
    DECLARE_DYNAMIC(CFile)

public:
    enum OpenFlags : unsigned {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000,
    };
    enum SeekPosition : unsigned { begin = 0, current = 1, end = 2 };

    CFile();
    // Takes over an open handle; it is not closed by the destructor.
    explicit CFile(nvk::os::HANDLE handle);
    // Opens or throws CFileException*.
    CFile(const char* fileName, unsigned openFlags);
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile() override;

    // False on failure, with the cause in `error` when one is given.
    virtual bool Open(const char* fileName, unsigned openFlags, CFileException* error = nullptr);
    // The number of bytes read; fewer than asked at the end of the file.
    virtual unsigned Read(void* buffer, unsigned count);
    virtual void Write(const void* buffer, unsigned count);
    // The new position from the start of the file.
    virtual std::uint64_t Seek(std::int64_t offset, unsigned from);
    std::uint64_t SeekToEnd() { return Seek(0, end); }
    void SeekToBegin() { Seek(0, begin); }
    virtual std::uint64_t GetPosition() const;
    virtual std::uint64_t GetLength() const;
    virtual void SetLength(std::uint64_t length);
    virtual void Flush();
    virtual void Close();
    // Closes without throwing.
    virtual void Abort();

    const CString& GetFilePath() const { return m_strFileName; }

    // Deletes a file, or throws CFileException* with the OS error's cause.
    static void Remove(const char* fileName);

    // INVALID_HANDLE_VALUE when no file is open.
    nvk::os::HANDLE m_hFile;

protected:
    [[noreturn]] void ThrowLastError() const;

    bool m_bCloseOnDelete;
    CString m_strFileName;
};
