#include "nvk/afx/exceptions.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "nvk/os/types.h"

IMPLEMENT_DYNAMIC(CException, CObject)
IMPLEMENT_DYNAMIC(CMemoryException, CException)
IMPLEMENT_DYNAMIC(CNotSupportedException, CException)
IMPLEMENT_DYNAMIC(CArchiveException, CException)
IMPLEMENT_DYNAMIC(CFileException, CException)

void CException::Delete() {
    if (m_bAutoDelete) {
        delete this;
    }
}

bool CException::GetErrorMessage(char* text, unsigned size, unsigned* helpContext) const {
    if (helpContext != nullptr) {
        *helpContext = 0;
    }
    CopyMessage("", text, size);
    return false;
}

bool CException::CopyMessage(const char* message, char* text, unsigned size) {
    if (text == nullptr || size == 0) {
        return false;
    }
    const std::size_t n = std::min<std::size_t>(std::strlen(message), size - 1);
    std::memcpy(text, message, n);
    text[n] = '\0';
    return true;
}

bool CMemoryException::GetErrorMessage(char* text, unsigned size, unsigned* helpContext) const {
    CException::GetErrorMessage(text, size, helpContext);
    return CopyMessage("Out of memory.", text, size);
}

bool CNotSupportedException::GetErrorMessage(char* text, unsigned size,
                                             unsigned* helpContext) const {
    CException::GetErrorMessage(text, size, helpContext);
    return CopyMessage("Unsupported operation was attempted.", text, size);
}

CArchiveException::CArchiveException(int cause, const char* archiveName)
    : m_cause(cause), m_strFileName(archiveName) {}

bool CArchiveException::GetErrorMessage(char* text, unsigned size, unsigned* helpContext) const {
    static const char* const kTexts[] = {
        "No error.",
        "An unexpected error occurred while reading or writing an archive.",
        "Tried to write to an archive opened for loading.",
        "Attempted to read past the end of an archive.",
        "Tried to read from an archive opened for storing.",
        "The archive has an invalid format.",
        "The archive contains an unexpected object.",
        "The archive contains an unexpected schema.",
    };
    CException::GetErrorMessage(text, size, helpContext);
    const bool known = m_cause >= 0 && m_cause < static_cast<int>(std::size(kTexts));
    return CopyMessage(kTexts[known ? m_cause : genericException], text, size);
}

CFileException::CFileException(int cause, long osError, const char* fileName)
    : m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}

bool CFileException::GetErrorMessage(char* text, unsigned size, unsigned* helpContext) const {
    static const char* const kTexts[] = {
        "No error.",
        "An unexpected error occurred while accessing %s.",
        "%s was not found.",
        "%s contains an invalid path.",
        "%s could not be opened because there are too many open files.",
        "Access to %s was denied.",
        "An invalid file handle was associated with %s.",
        "%s could not be removed because it is the current directory.",
        "%s could not be created because the directory is full.",
        "Seek failed on %s.",
        "A hardware I/O error was reported while accessing %s.",
        "A sharing violation occurred while accessing %s.",
        "A locking violation occurred while locking %s.",
        "Disk full while accessing %s.",
        "An attempt was made to access %s past its end.",
    };
    CException::GetErrorMessage(text, size, helpContext);
    const bool known = m_cause >= 0 && m_cause < static_cast<int>(std::size(kTexts));
    CString message;
    message.Format(kTexts[known ? m_cause : genericException],
                   m_strFileName.IsEmpty() ? "an unnamed file" : m_strFileName.GetString());
    return CopyMessage(message, text, size);
}

int CFileException::OsErrorToException(long osError) {
    using namespace nvk::os;
    switch (static_cast<DWORD>(osError)) {
        case ERROR_SUCCESS:
            return none;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_MOD_NOT_FOUND:
            return fileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_BAD_NETPATH:
        case ERROR_FILENAME_EXCED_RANGE:
            return badPath;
        case ERROR_TOO_MANY_OPEN_FILES:
            return tooManyOpenFiles;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return accessDenied;
        case ERROR_INVALID_HANDLE:
            return invalidFile;
        case ERROR_NEGATIVE_SEEK:
            return badSeek;
        case ERROR_NOT_READY:
            return hardIO;
        case ERROR_SHARING_VIOLATION:
            return sharingViolation;
        case ERROR_LOCK_VIOLATION:
        case ERROR_NOT_LOCKED:
            return lockViolation;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return diskFull;
        case ERROR_HANDLE_EOF:
            return endOfFile;
        default:
            return genericException;
    }
}

void CFileException::ThrowOsError(long osError, const char* fileName) {
    AfxThrowFileException(OsErrorToException(osError), osError, fileName);
}

void AfxThrowMemoryException() {
    static CMemoryException shared(false);
    throw &shared;
}

void AfxThrowNotSupportedException() {
    throw new CNotSupportedException;
}

void AfxThrowArchiveException(int cause, const char* archiveName) {
    throw new CArchiveException(cause, archiveName);
}

void AfxThrowFileException(int cause, long osError, const char* fileName) {
    throw new CFileException(cause, osError, fileName);
}
