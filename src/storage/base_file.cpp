#include "nvk/storage/base_file.h"

#include "os/api/file.h"
#include "os/api/sync.h"

namespace os = nvk::os;

EBaseFile::EBaseFile() : m_Handle(os::INVALID_HANDLE_VALUE) {}

EBaseFile::EBaseFile(const char* name)
    : m_Handle(os::CreateFileA(name, os::GENERIC_READ | os::GENERIC_WRITE,
                               os::FILE_SHARE_READ | os::FILE_SHARE_WRITE, nullptr,
                               os::OPEN_EXISTING, os::FILE_ATTRIBUTE_NORMAL, nullptr)) {}

EBaseFile::~EBaseFile() {
    if (IsOpen()) {
        os::CloseHandle(m_Handle);
    }
}

void EBaseFile::Close() {
    if (IsOpen()) {
        os::CloseHandle(m_Handle);
    }
    m_Handle = os::INVALID_HANDLE_VALUE;
}

void EBaseFile::Flush() {
    if (IsOpen()) {
        os::FlushFileBuffers(m_Handle);
    }
}

// Whatever the argument says, the token is the first ten bytes of the file;
// the answer of the system is not waited for nor reported.
void EBaseFile::Lock(unsigned long) {
    if (IsOpen()) {
        os::LockFile(m_Handle, 0, 0, 10, 0);
    }
}

void EBaseFile::UnLock(unsigned long) {
    if (IsOpen()) {
        os::UnlockFile(m_Handle, 0, 0, 10, 0);
    }
}

// A file is never truncated here: with kCreate the existing file is tried
// first, and only then a new one is made.
int EBaseFile::Open(const char* name, int mode, int share) {
    os::DWORD access = 0;
    if (mode & kRead) {
        access |= os::GENERIC_READ;
    }
    if (mode & kWrite) {
        access |= os::GENERIC_WRITE;
    }
    const os::DWORD shareMode = share != 0 ? os::FILE_SHARE_READ | os::FILE_SHARE_WRITE : 0;
    m_Handle = os::CreateFileA(name, access, shareMode, nullptr, os::OPEN_EXISTING,
                               os::FILE_ATTRIBUTE_NORMAL, nullptr);
    if (!IsOpen() && (mode & kCreate)) {
        m_Handle = os::CreateFileA(name, access, shareMode, nullptr, os::CREATE_NEW,
                                   os::FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    return IsOpen() ? 1 : 0;
}

// A short read fails, although the bytes that came are in the buffer.
int EBaseFile::Read(void* buffer, unsigned long size) {
    if (!IsOpen()) {
        return 0;
    }
    if (size == 0) {
        return 1;
    }
    os::DWORD done = 0;
    const os::BOOL ok =
        os::ReadFile(m_Handle, buffer, static_cast<os::DWORD>(size), &done, nullptr);
    return ok && done == size ? 1 : 0;
}

int EBaseFile::Write(void* buffer, unsigned long size) {
    if (!IsOpen()) {
        return 0;
    }
    os::DWORD done = 0;
    const os::BOOL ok =
        os::WriteFile(m_Handle, buffer, static_cast<os::DWORD>(size), &done, nullptr);
    return ok && done == size ? 1 : 0;
}

unsigned long EBaseFile::Seek(long offset, unsigned long whence) {
    if (!IsOpen()) {
        return 0;
    }
    return os::SetFilePointer(m_Handle, static_cast<os::LONG>(offset), nullptr,
                              static_cast<os::DWORD>(whence));
}

void EBaseFile::SetTaille(unsigned long size) {
    if (IsOpen()) {
        Seek(static_cast<long>(size), 0);
        os::SetEndOfFile(m_Handle);
    }
}

unsigned long EBaseFile::Taille() const {
    return IsOpen() ? os::GetFileSize(m_Handle, nullptr) : 0;
}

// A slot that a derived class may fill.
int EBaseFile::GetLigne(char*, unsigned long) {
    return 1;
}

void EBaseFile::Remove(const char* name) {
    os::DeleteFileA(name);
}

void EBaseFile::Rename(const char* from, const char* to) {
    os::MoveFileA(from, to);
}
