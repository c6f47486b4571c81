// CArchive: a buffered stream of values over a CFile, either storing or
// loading. The byte format is fixed on every platform:
//   - numbers are little-endian: bool and char 1 byte (bool as 0 or 1),
//     short 2, int 4, long long 8, float and double as their IEEE 754 bits;
//   - a string is its length prefix (see WriteStringLength) and then its
//     characters, without a terminator.
// Storing to a loading archive throws CArchiveException* with cause readOnly,
// loading from a storing one cause writeOnly, and a value cut short by the
// end of the data cause endOfFile. Errors of the file pass as CFileException*,
// and exhausted memory as CMemoryException*.
#pragma once

#include <cstdint>
#include <vector>

#include "nvk/afx/allocator.h"
#include "nvk/nvkafx_export.h"

class CFile;
class CString;

class NVKAFX_EXPORT CArchive {
public:
    enum Mode : unsigned { store = 0, load = 1, bNoFlushOnDelete = 2 };

    CArchive(CFile* file, unsigned mode, int bufferSize = 4096);
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;
    // Closes the archive unless the mode has bNoFlushOnDelete; a failure
    // there is dropped, so call Close to see it.
    ~CArchive();

    bool IsLoading() const { return (m_nMode & load) != 0; }
    bool IsStoring() const { return !IsLoading(); }
    CFile* GetFile() const { return m_pFile; }

    // The number of bytes read, fewer than asked at the end of the data.
    unsigned Read(void* buffer, unsigned count);
    void Write(const void* buffer, unsigned count);
    // Storing: writes the buffer to the file. Loading: gives the bytes read
    // ahead back to the file, so that its position is that of the archive.
    void Flush();
    // Flushes and lets go of the file, which stays open.
    void Close();
    // Lets go of the file without writing what is buffered.
    void Abort();

    // The string length prefix: below 255 one byte; from 255 to 65,533 the
    // byte 255 and a 16-bit length; from 65,534 on the byte 255, the 16-bit
    // value 65,535 and a 32-bit length.
    void WriteStringLength(std::uint32_t length);
    std::uint32_t ReadStringLength();

    CArchive& operator<<(bool value);
    CArchive& operator<<(char value);
    CArchive& operator<<(signed char value);
    CArchive& operator<<(unsigned char value);
    CArchive& operator<<(short value);
    CArchive& operator<<(unsigned short value);
    CArchive& operator<<(int value);
    CArchive& operator<<(unsigned value);
    CArchive& operator<<(long long value);
    CArchive& operator<<(unsigned long long value);
    CArchive& operator<<(float value);
    CArchive& operator<<(double value);
    CArchive& operator<<(const CString& text);
    CArchive& operator<<(const char* text);  // as a CString

    CArchive& operator>>(bool& value);
    CArchive& operator>>(char& value);
    CArchive& operator>>(signed char& value);
    CArchive& operator>>(unsigned char& value);
    CArchive& operator>>(short& value);
    CArchive& operator>>(unsigned short& value);
    CArchive& operator>>(int& value);
    CArchive& operator>>(unsigned& value);
    CArchive& operator>>(long long& value);
    CArchive& operator>>(unsigned long long& value);
    CArchive& operator>>(float& value);
    CArchive& operator>>(double& value);
    CArchive& operator>>(CString& text);

private:
    [[noreturn]] void Throw(int cause) const;
    void CheckStoring() const;
    void CheckLoading() const;
    // Writes `size` bytes of the little-endian form of `value`.
    void WriteNumber(std::uint64_t value, unsigned size);
    // Reads `size` bytes, little-endian; throws endOfFile when they are short.
    std::uint64_t ReadNumber(unsigned size);
    // Makes at least `count` bytes available in the buffer, or fewer at the
    // end of the data; returns how many are.
    std::size_t FillBuffer(std::size_t count);

    CFile* m_pFile;
    unsigned m_nMode;
    std::vector<std::uint8_t, nvk::afx::FrameworkAllocator<std::uint8_t>> m_buffer;
    // Storing: bytes [0, m_nEnd) wait to be written. Loading: bytes
    // [m_nCurrent, m_nEnd) are read ahead and not yet consumed.
    std::size_t m_nCurrent = 0;
    std::size_t m_nEnd = 0;
};
