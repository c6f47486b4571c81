// The framework's exceptions. They are thrown by pointer, as the framework
// throws them: `throw new CArchiveException(...)`. A handler catches
// `CException*` (or a derived pointer) and calls Delete() when done, which
// frees a heap exception and leaves the shared memory exception alone.
// nvk::afx::ExceptionPtr does that Delete() at the end of a scope.
#pragma once

#include <memory>

#include "nvk/afx/cstring.h"
#include "nvk/afx/object.h"
#include "nvk/nvkafx_export.h"

class NVKAFX_EXPORT CException : public CObject {
    DECLARE_DYNAMIC(CException)

public:
    explicit CException(bool autoDelete = true) : m_bAutoDelete(autoDelete) {}
    // Frees the exception if it was made on the heap for one throw.
    void Delete();
    // Copies a short description, zero-terminated, into `text` of `size`
    // bytes; false when there is nothing to say. A default argument binds by
    // the static type, so each override repeats it.
    virtual bool GetErrorMessage(char* text, unsigned size, unsigned* helpContext = nullptr) const;

protected:
    static bool CopyMessage(const char* message, char* text, unsigned size);

private:
    bool m_bAutoDelete;
};

class NVKAFX_EXPORT CMemoryException : public CException {
    DECLARE_DYNAMIC(CMemoryException)

public:
    using CException::CException;
    bool GetErrorMessage(char* text, unsigned size, unsigned* helpContext = nullptr) const override;
};

class NVKAFX_EXPORT CNotSupportedException : public CException {
    DECLARE_DYNAMIC(CNotSupportedException)

public:
    using CException::CException;
    bool GetErrorMessage(char* text, unsigned size, unsigned* helpContext = nullptr) const override;
};

class NVKAFX_EXPORT CArchiveException : public CException {
    DECLARE_DYNAMIC(CArchiveException)

public:
    enum {
        none = 0,
        genericException = 1,
        readOnly = 2,   // storing to an archive that is loading
        endOfFile = 3,  // reading past the end of the data
        writeOnly = 4,  // loading from an archive that is storing
        badIndex = 5,
        badClass = 6,
        badSchema = 7,
    };

    explicit CArchiveException(int cause = none, const char* archiveName = nullptr);
    bool GetErrorMessage(char* text, unsigned size, unsigned* helpContext = nullptr) const override;

    int m_cause;
    CString m_strFileName;
};

class NVKAFX_EXPORT CFileException : public CException {
    DECLARE_DYNAMIC(CFileException)

public:
    enum {
        none = 0,
        genericException = 1,
        fileNotFound = 2,
        badPath = 3,
        tooManyOpenFiles = 4,
        accessDenied = 5,
        invalidFile = 6,
        removeCurrentDir = 7,
        directoryFull = 8,
        badSeek = 9,
        hardIO = 10,
        sharingViolation = 11,
        lockViolation = 12,
        diskFull = 13,
        endOfFile = 14,
    };

    explicit CFileException(int cause = none, long osError = -1, const char* fileName = nullptr);
    bool GetErrorMessage(char* text, unsigned size, unsigned* helpContext = nullptr) const override;

    // The cause for a GetLastError code.
    static int OsErrorToException(long osError);
    [[noreturn]] static void ThrowOsError(long osError, const char* fileName = nullptr);

    int m_cause;
    long m_lOsError;
    CString m_strFileName;
};

// Throw a CMemoryException* to one object shared by the process, since memory
// may be short; its Delete() does nothing.
[[noreturn]] NVKAFX_EXPORT void AfxThrowMemoryException();
[[noreturn]] NVKAFX_EXPORT void AfxThrowNotSupportedException();
[[noreturn]] NVKAFX_EXPORT void AfxThrowArchiveException(int cause,
                                                         const char* archiveName = nullptr);
[[noreturn]] NVKAFX_EXPORT void AfxThrowFileException(int cause, long osError = -1,
                                                      const char* fileName = nullptr);

namespace nvk::afx {

struct ExceptionDeleter {
    void operator()(CException* e) const { e->Delete(); }
};
// Owns a caught exception: `catch (CException* e) { ExceptionPtr owner(e); ... }`.
using ExceptionPtr = std::unique_ptr<CException, ExceptionDeleter>;

}  // namespace nvk::afx
