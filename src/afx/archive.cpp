#include "nvk/afx/archive.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>

#include "nvk/afx/cstring.h"
#include "nvk/afx/exceptions.h"
#include "nvk/afx/file.h"

namespace {

// The prefix values that announce a longer length field.
constexpr std::uint8_t kWordFollows = 0xFF;
constexpr std::uint16_t kDwordFollows = 0xFFFF;
// Long strings are read in steps, so that a damaged length runs into the end
// of the data instead of asking for gigabytes at once.
constexpr std::uint32_t kReadStep = 1u << 20;

}  // namespace

CArchive::CArchive(CFile* file, unsigned mode, int bufferSize)
    : m_pFile(file), m_nMode(mode), m_buffer(static_cast<std::size_t>(std::max(bufferSize, 64))) {}

CArchive::~CArchive() {
    if (m_pFile != nullptr && (m_nMode & bNoFlushOnDelete) == 0) {
        try {
            Close();
        } catch (CException* e) {
            e->Delete();
        }
    }
}

unsigned CArchive::Read(void* buffer, unsigned count) {
    CheckLoading();
    auto* out = static_cast<std::uint8_t*>(buffer);
    unsigned done = 0;
    while (done < count) {
        if (m_nCurrent == m_nEnd) {
            m_nCurrent = m_nEnd = 0;
            const unsigned left = count - done;
            // A large request goes straight to the caller's memory.
            if (left >= m_buffer.size()) {
                const unsigned n = m_pFile->Read(out + done, left);
                done += n;
                if (n == 0) {
                    break;
                }
                continue;
            }
            m_nEnd = m_pFile->Read(m_buffer.data(), static_cast<unsigned>(m_buffer.size()));
            if (m_nEnd == 0) {
                break;
            }
        }
        const std::size_t n = std::min<std::size_t>(count - done, m_nEnd - m_nCurrent);
        std::memcpy(out + done, m_buffer.data() + m_nCurrent, n);
        m_nCurrent += n;
        done += static_cast<unsigned>(n);
    }
    return done;
}

void CArchive::Write(const void* buffer, unsigned count) {
    CheckStoring();
    if (count > m_buffer.size() - m_nEnd) {
        Flush();
        if (count >= m_buffer.size()) {
            m_pFile->Write(buffer, count);
            return;
        }
    }
    std::memcpy(m_buffer.data() + m_nEnd, buffer, count);
    m_nEnd += count;
}

void CArchive::Flush() {
    if (m_pFile == nullptr) {
        return;
    }
    if (IsStoring()) {
        if (m_nEnd > 0) {
            const auto pending = static_cast<unsigned>(m_nEnd);
            m_nEnd = 0;
            m_pFile->Write(m_buffer.data(), pending);
        }
    } else if (m_nEnd > m_nCurrent) {
        const auto unread = static_cast<std::int64_t>(m_nEnd - m_nCurrent);
        m_nCurrent = m_nEnd = 0;
        m_pFile->Seek(-unread, CFile::current);
    }
    m_nCurrent = m_nEnd = 0;
}

void CArchive::Close() {
    try {
        Flush();
    } catch (...) {
        Abort();
        throw;
    }
    Abort();
}

void CArchive::Abort() {
    m_pFile = nullptr;
    m_nCurrent = m_nEnd = 0;
}

void CArchive::WriteStringLength(std::uint32_t length) {
    if (length < kWordFollows) {
        WriteNumber(length, 1);
        return;
    }
    WriteNumber(kWordFollows, 1);
    if (length < kDwordFollows - 1u) {
        WriteNumber(length, 2);
        return;
    }
    WriteNumber(kDwordFollows, 2);
    WriteNumber(length, 4);
}

std::uint32_t CArchive::ReadStringLength() {
    const auto byte = static_cast<std::uint32_t>(ReadNumber(1));
    if (byte != kWordFollows) {
        return byte;
    }
    // 65,534 is never written as a 16-bit length; read back it counts as one.
    const auto word = static_cast<std::uint32_t>(ReadNumber(2));
    if (word != kDwordFollows) {
        return word;
    }
    return static_cast<std::uint32_t>(ReadNumber(4));
}

CArchive& CArchive::operator<<(bool value) {
    WriteNumber(value ? 1 : 0, 1);
    return *this;
}
CArchive& CArchive::operator<<(char value) {
    WriteNumber(static_cast<std::uint8_t>(value), 1);
    return *this;
}
CArchive& CArchive::operator<<(signed char value) {
    WriteNumber(static_cast<std::uint8_t>(value), 1);
    return *this;
}
CArchive& CArchive::operator<<(unsigned char value) {
    WriteNumber(value, 1);
    return *this;
}
CArchive& CArchive::operator<<(short value) {
    WriteNumber(static_cast<std::uint16_t>(value), 2);
    return *this;
}
CArchive& CArchive::operator<<(unsigned short value) {
    WriteNumber(value, 2);
    return *this;
}
CArchive& CArchive::operator<<(int value) {
    WriteNumber(static_cast<std::uint32_t>(value), 4);
    return *this;
}
CArchive& CArchive::operator<<(unsigned value) {
    WriteNumber(value, 4);
    return *this;
}
CArchive& CArchive::operator<<(long long value) {
    WriteNumber(static_cast<std::uint64_t>(value), 8);
    return *this;
}
CArchive& CArchive::operator<<(unsigned long long value) {
    WriteNumber(value, 8);
    return *this;
}
CArchive& CArchive::operator<<(float value) {
    WriteNumber(std::bit_cast<std::uint32_t>(value), 4);
    return *this;
}
CArchive& CArchive::operator<<(double value) {
    WriteNumber(std::bit_cast<std::uint64_t>(value), 8);
    return *this;
}

CArchive& CArchive::operator<<(const CString& text) {
    CheckStoring();
    WriteStringLength(static_cast<std::uint32_t>(text.GetLength()));
    Write(text.GetString(), static_cast<unsigned>(text.GetLength()));
    return *this;
}

CArchive& CArchive::operator<<(const char* text) {
    return *this << CString(text);
}

CArchive& CArchive::operator>>(bool& value) {
    value = ReadNumber(1) != 0;
    return *this;
}
CArchive& CArchive::operator>>(char& value) {
    value = static_cast<char>(ReadNumber(1));
    return *this;
}
CArchive& CArchive::operator>>(signed char& value) {
    value = static_cast<signed char>(ReadNumber(1));
    return *this;
}
CArchive& CArchive::operator>>(unsigned char& value) {
    value = static_cast<unsigned char>(ReadNumber(1));
    return *this;
}
CArchive& CArchive::operator>>(short& value) {
    value = static_cast<short>(ReadNumber(2));
    return *this;
}
CArchive& CArchive::operator>>(unsigned short& value) {
    value = static_cast<unsigned short>(ReadNumber(2));
    return *this;
}
CArchive& CArchive::operator>>(int& value) {
    value = static_cast<int>(ReadNumber(4));
    return *this;
}
CArchive& CArchive::operator>>(unsigned& value) {
    value = static_cast<unsigned>(ReadNumber(4));
    return *this;
}
CArchive& CArchive::operator>>(long long& value) {
    value = static_cast<long long>(ReadNumber(8));
    return *this;
}
CArchive& CArchive::operator>>(unsigned long long& value) {
    value = ReadNumber(8);
    return *this;
}
CArchive& CArchive::operator>>(float& value) {
    value = std::bit_cast<float>(static_cast<std::uint32_t>(ReadNumber(4)));
    return *this;
}
CArchive& CArchive::operator>>(double& value) {
    value = std::bit_cast<double>(ReadNumber(8));
    return *this;
}

CArchive& CArchive::operator>>(CString& text) {
    // The announced length is believed only as far as the data goes: the
    // string grows step by step with what is read, so a damaged length ends
    // in endOfFile, and memory is asked for only for bytes that are there.
    const std::uint32_t length = ReadStringLength();
    CString loaded;
    for (std::uint32_t done = 0; done < length;) {
        const std::uint32_t step = std::min(length - done, kReadStep);
        if (done + step > static_cast<std::uint32_t>(INT_MAX)) {
            // Gigabytes of real data that a CString can't hold.
            AfxThrowMemoryException();
        }
        char* to = loaded.GetBufferSetLength(static_cast<int>(done + step)) + done;
        if (Read(to, step) != step) {
            Throw(CArchiveException::endOfFile);
        }
        done += step;
    }
    text = std::move(loaded);
    return *this;
}

void CArchive::Throw(int cause) const {
    AfxThrowArchiveException(cause,
                             m_pFile != nullptr ? m_pFile->GetFilePath().GetString() : nullptr);
}

void CArchive::CheckStoring() const {
    if (m_pFile == nullptr) {
        Throw(CArchiveException::genericException);
    }
    if (IsLoading()) {
        Throw(CArchiveException::readOnly);
    }
}

void CArchive::CheckLoading() const {
    if (m_pFile == nullptr) {
        Throw(CArchiveException::genericException);
    }
    if (IsStoring()) {
        Throw(CArchiveException::writeOnly);
    }
}

void CArchive::WriteNumber(std::uint64_t value, unsigned size) {
    CheckStoring();
    std::uint8_t bytes[8];
    for (unsigned i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
    Write(bytes, size);
}

std::uint64_t CArchive::ReadNumber(unsigned size) {
    CheckLoading();
    if (FillBuffer(size) < size) {
        Throw(CArchiveException::endOfFile);
    }
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i) {
        value |= static_cast<std::uint64_t>(m_buffer[m_nCurrent + i]) << (8 * i);
    }
    m_nCurrent += size;
    return value;
}

std::size_t CArchive::FillBuffer(std::size_t count) {
    std::size_t available = m_nEnd - m_nCurrent;
    if (available >= count) {
        return available;
    }
    std::memmove(m_buffer.data(), m_buffer.data() + m_nCurrent, available);
    m_nCurrent = 0;
    m_nEnd = available;
    while (m_nEnd < count) {
        const unsigned n = m_pFile->Read(m_buffer.data() + m_nEnd,
                                         static_cast<unsigned>(m_buffer.size() - m_nEnd));
        if (n == 0) {
            break;
        }
        m_nEnd += n;
    }
    return m_nEnd;
}
