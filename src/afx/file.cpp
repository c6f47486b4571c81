#include "nvk/afx/file.h"

#include "nvk/afx/exceptions.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/sync.h"

using namespace nvk::os;

IMPLEMENT_DYNAMIC(CFile, CObject)

namespace {

DWORD Access(unsigned flags) {
    switch (flags & 3) {
        case CFile::modeWrite:
            return GENERIC_WRITE;
        case CFile::modeReadWrite:
            return GENERIC_READ | GENERIC_WRITE;
        default:
            return GENERIC_READ;
    }
}

DWORD Share(unsigned flags) {
    switch (flags & 0x70) {
        case CFile::shareDenyWrite:
            return FILE_SHARE_READ;
        case CFile::shareDenyRead:
            return FILE_SHARE_WRITE;
        case CFile::shareDenyNone:
            return FILE_SHARE_READ | FILE_SHARE_WRITE;
        default:  // exclusive and compatibility modes share nothing
            return 0;
    }
}

DWORD Disposition(unsigned flags) {
    if ((flags & CFile::modeCreate) == 0) {
        return OPEN_EXISTING;
    }
    return (flags & CFile::modeNoTruncate) != 0 ? OPEN_ALWAYS : CREATE_ALWAYS;
}

}  // namespace

CFile::CFile() : m_hFile(INVALID_HANDLE_VALUE), m_bCloseOnDelete(false) {}

CFile::CFile(HANDLE handle) : m_hFile(handle), m_bCloseOnDelete(false) {}

CFile::CFile(const char* fileName, unsigned openFlags) : CFile() {
    CFileException error;
    if (!Open(fileName, openFlags, &error)) {
        AfxThrowFileException(error.m_cause, error.m_lOsError, error.m_strFileName);
    }
}

CFile::~CFile() {
    if (m_hFile != INVALID_HANDLE_VALUE && m_bCloseOnDelete) {
        Abort();
    }
}

bool CFile::Open(const char* fileName, unsigned openFlags, CFileException* error) {
    // A file opened here before is closed; a handle taken over is let go.
    if (m_bCloseOnDelete) {
        Abort();
    }
    m_hFile = INVALID_HANDLE_VALUE;
    m_strFileName = fileName;
    const HANDLE handle = CreateFileA(fileName, Access(openFlags), Share(openFlags), nullptr,
                                      Disposition(openFlags), FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        if (error != nullptr) {
            const DWORD code = GetLastError();
            error->m_lOsError = static_cast<long>(code);
            error->m_cause = CFileException::OsErrorToException(error->m_lOsError);
            error->m_strFileName = fileName;
        }
        return false;
    }
    m_hFile = handle;
    m_bCloseOnDelete = true;
    return true;
}

unsigned CFile::Read(void* buffer, unsigned count) {
    DWORD read = 0;
    if (count > 0 && !ReadFile(m_hFile, buffer, count, &read, nullptr)) {
        ThrowLastError();
    }
    return read;
}

void CFile::Write(const void* buffer, unsigned count) {
    DWORD written = 0;
    if (count == 0) {
        return;
    }
    if (!WriteFile(m_hFile, buffer, count, &written, nullptr)) {
        ThrowLastError();
    }
    if (written != count) {
        AfxThrowFileException(CFileException::diskFull, -1, m_strFileName);
    }
}

std::uint64_t CFile::Seek(std::int64_t offset, unsigned from) {
    LONG high = static_cast<LONG>(offset >> 32);
    SetLastError(ERROR_SUCCESS);
    const DWORD low = SetFilePointer(m_hFile, static_cast<LONG>(offset & 0xFFFFFFFF), &high, from);
    // A low word of all ones is also a valid position; the error code decides.
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS) {
        ThrowLastError();
    }
    return (static_cast<std::uint64_t>(static_cast<DWORD>(high)) << 32) | low;
}

std::uint64_t CFile::GetPosition() const {
    return const_cast<CFile*>(this)->Seek(0, current);
}

std::uint64_t CFile::GetLength() const {
    DWORD high = 0;
    SetLastError(ERROR_SUCCESS);
    const DWORD low = GetFileSize(m_hFile, &high);
    if (low == INVALID_FILE_SIZE && GetLastError() != ERROR_SUCCESS) {
        ThrowLastError();
    }
    return (static_cast<std::uint64_t>(high) << 32) | low;
}

void CFile::SetLength(std::uint64_t length) {
    Seek(static_cast<std::int64_t>(length), begin);
    if (!SetEndOfFile(m_hFile)) {
        ThrowLastError();
    }
}

void CFile::Flush() {
    if (m_hFile != INVALID_HANDLE_VALUE && !FlushFileBuffers(m_hFile)) {
        ThrowLastError();
    }
}

void CFile::Close() {
    const bool failed = m_hFile != INVALID_HANDLE_VALUE && !CloseHandle(m_hFile);
    m_hFile = INVALID_HANDLE_VALUE;
    m_bCloseOnDelete = false;
    if (failed) {
        ThrowLastError();
    }
}

void CFile::Abort() {
    if (m_hFile != INVALID_HANDLE_VALUE) {
        CloseHandle(m_hFile);
    }
    m_hFile = INVALID_HANDLE_VALUE;
    m_bCloseOnDelete = false;
}

void CFile::ThrowLastError() const {
    CFileException::ThrowOsError(static_cast<long>(GetLastError()), m_strFileName);
}

void CFile::Remove(const char* fileName) {
    if (!nvk::os::DeleteFileA(fileName)) {
        CFileException::ThrowOsError(static_cast<long>(nvk::os::GetLastError()), fileName);
    }
}
