#include "nvk/storage/buffered_file.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "os/api/file.h"

namespace {

constexpr std::uint32_t kDefaultBufferSize = 16384;
constexpr std::uint32_t kBufferGrain = 4096;

}  // namespace

EBufferedFile::EBufferedFile()
    : m_Buffer(nullptr),
      m_BufferSize(kDefaultBufferSize),
      m_Valid(0),
      m_BlockOffset(0),
      m_InnerOffset(0),
      m_BaseOffset(0),
      m_Flags(kAtEnd | kFailed) {}

EBufferedFile::~EBufferedFile() {
    if (IsOpen()) {
        EBufferedFile::Close();
    }
    ReleaseBuffer();
}

void EBufferedFile::ReleaseBuffer() {
    m_Window.reset();
    m_Buffer = nullptr;
}

void EBufferedFile::AllocateBuffer() {
    m_Window = std::make_shared<char[]>(m_BufferSize);
    m_Buffer = m_Window.get();
}

void EBufferedFile::SeekReal(std::uint32_t offset) {
    EBaseFile::Seek(static_cast<long>(offset), 0);
}

int EBufferedFile::Open(const char* name, int mode, int share) {
    Set(kBufferLoaded | kBufferDirty | kAtEnd, false);
    const int result = EBaseFile::Open(name, mode, share);
    const bool appendOnly = (mode & kWrite) != 0 && (mode & kRead) == 0;
    Set(kAppendOnly, appendOnly);
    if (appendOnly) {
        m_BaseOffset = static_cast<std::uint32_t>(EBaseFile::Taille());
    }
    return result;
}

void EBufferedFile::Close() {
    Flush();
    // The window goes with the file: a closed object holds no content, so
    // that Taille answers 0 and a later transfer loads a window afresh
    // instead of using the one released here.
    Set(kBufferDirty | kAppendOnly | kBufferLoaded, false);
    Set(kAtEnd, true);
    m_BlockOffset = m_InnerOffset = m_BaseOffset = 0;
    m_Valid = 0;
    ReleaseBuffer();
    EBaseFile::Close();
}

void EBufferedFile::Flush() {
    WriteBuffer();
    EBaseFile::Flush();
}

unsigned long EBufferedFile::Taille() const {
    const std::uint64_t real = EBaseFile::Taille();
    if (!Has(kBufferLoaded)) {
        return static_cast<unsigned long>(real);
    }
    const std::uint64_t held = std::uint64_t{m_BaseOffset} + m_BlockOffset + m_Valid;
    return static_cast<unsigned long>(std::max(real, held));
}

void EBufferedFile::RealOffsetToInternal(unsigned long offset) {
    const auto target = static_cast<std::uint32_t>(offset);
    m_InnerOffset = target % m_BufferSize;
    const std::uint32_t block = target - m_InnerOffset;
    if (!(Has(kBufferLoaded) && block == m_BlockOffset)) {
        Set(kBufferLoaded, false);
        WriteBuffer();
    }
    m_BlockOffset = block;
}

unsigned long EBufferedFile::Seek(long offset, unsigned long whence) {
    std::uint32_t target = 0;
    if (whence == 0) {
        target = static_cast<std::uint32_t>(offset);
    } else if (whence == 1) {
        target = m_BlockOffset + m_InnerOffset + static_cast<std::uint32_t>(offset);
    } else if (whence == 2) {
        target = static_cast<std::uint32_t>(Taille()) - static_cast<std::uint32_t>(offset);
    } else {
        return 0;
    }
    const auto size = static_cast<std::uint32_t>(Taille());
    Set(kAtEnd, target >= size);
    if (target >= size) {
        target = size;
    }
    RealOffsetToInternal(target);
    return target;
}

void EBufferedFile::InitBuffer(unsigned long offset) {
    ReleaseBuffer();
    AllocateBuffer();
    Set(kFailed, false);
    RealOffsetToInternal(offset);
    m_Valid = 0;
}

bool EBufferedFile::ReadBuffer() {
    if (m_Buffer == nullptr) {
        InitBuffer(m_BlockOffset + m_InnerOffset);
    }
    SeekReal(m_BaseOffset + m_BlockOffset);
    // A window that starts past the end holds nothing. Taken in unsigned
    // arithmetic its share would be a whole window of bytes never read, which
    // a later write of the window would put in the file.
    const std::uint64_t start = std::uint64_t{m_BaseOffset} + m_BlockOffset;
    const std::uint64_t size = Taille();
    m_Valid = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(size > start ? size - start : 0, m_BufferSize));
    // The rest of the window is cleared, so that a write that counts more
    // bytes than it wrote puts zeros out, not another block's bytes.
    std::memset(m_Buffer + m_Valid, 0, m_BufferSize - m_Valid);
    Set(kBufferLoaded, true);
    Set(kFailed, EBaseFile::Read(m_Buffer, m_Valid) == 0);
    return !Has(kFailed);
}

bool EBufferedFile::WriteBuffer() {
    if (Has(kBufferDirty) && m_Valid != 0 && m_Buffer != nullptr) {
        SeekReal(m_BaseOffset + m_BlockOffset);
        Set(kBufferDirty, false);
        Set(kFailed, EBaseFile::Write(m_Buffer, m_Valid) == 0);
    } else {
        Set(kBufferDirty, false);
    }
    return !Has(kFailed);
}

int EBufferedFile::Read(void* buffer, unsigned long size) {
    if (Has(kAppendOnly)) {
        Seek(static_cast<long>(size), 1);
        return 0;
    }
    auto* out = static_cast<char*>(buffer);
    unsigned long remaining = size;
    while (remaining != 0 && !Has(kAtEnd)) {
        if (!Has(kBufferLoaded)) {
            ReadBuffer();
        }
        // A window that does not reach the position has nothing to give.
        if (Has(kFailed) || m_Valid == 0 || m_InnerOffset >= m_Valid) {
            return 0;
        }
        const auto chunk =
            static_cast<std::uint32_t>(std::min<unsigned long>(remaining, m_Valid - m_InnerOffset));
        std::memcpy(out, m_Buffer + m_InnerOffset, chunk);
        out += chunk;
        remaining -= chunk;
        Seek(static_cast<long>(chunk), 1);
    }
    return remaining == 0 ? 1 : 0;
}

int EBufferedFile::Write(void* buffer, unsigned long size) {
    // A closed object writes nothing, as a closed file: a window filled now
    // would count in Taille with no file behind it.
    if (!IsOpen()) {
        return 0;
    }
    const auto* in = static_cast<const char*>(buffer);
    unsigned long remaining = size;
    while (remaining != 0) {
        std::uint32_t chunk = 0;
        if (m_InnerOffset == 0 && remaining >= m_BufferSize) {
            // A whole block at a block boundary goes out straight.
            SeekReal(m_BaseOffset + m_BlockOffset);
            EBaseFile::Write(const_cast<char*>(in), m_BufferSize);
            chunk = m_BufferSize;
        } else {
            if (!Has(kBufferLoaded)) {
                ReadBuffer();
            }
            chunk = static_cast<std::uint32_t>(
                std::min<unsigned long>(remaining, m_BufferSize - m_InnerOffset));
            // The count grows by every write, overwrites included, up to the
            // window's size.
            if (m_Valid < m_BufferSize) {
                m_Valid = std::min(m_Valid + chunk, m_BufferSize);
            }
            std::memcpy(m_Buffer + m_InnerOffset, in, chunk);
            Set(kBufferDirty, true);
        }
        in += chunk;
        remaining -= chunk;
        const std::uint32_t position = m_BlockOffset + m_InnerOffset + chunk;
        m_InnerOffset = position % m_BufferSize;
        const std::uint32_t block = position - m_InnerOffset;
        if (!(Has(kBufferLoaded) && block == m_BlockOffset)) {
            Set(kBufferLoaded, false);
            WriteBuffer();
        }
        m_BlockOffset = block;
    }
    return Has(kFailed) ? 0 : 1;
}

void EBufferedFile::SetBufferSize(unsigned long size) {
    ReleaseBuffer();
    const std::uint64_t rounded =
        (std::uint64_t{size} + kBufferGrain - 1) / kBufferGrain * kBufferGrain;
    m_BufferSize = static_cast<std::uint32_t>(std::max<std::uint64_t>(rounded, kBufferGrain));
    AllocateBuffer();
    Set(kBufferLoaded, false);
    m_Valid = 0;
}

void EBufferedFile::SetTaille(unsigned long size) {
    Flush();
    if (IsOpen()) {
        EBaseFile::Seek(static_cast<long>(size), 0);
        nvk::os::SetEndOfFile(m_Handle);
    }
    RealOffsetToInternal(size);
    Set(kBufferLoaded, false);
}

Chaine EBufferedFile::ReadLine(const Chaine& separator) {
    std::string result;
    if (Has(kAppendOnly)) {
        return Chaine();
    }
    const std::uint32_t start = static_cast<std::uint32_t>(Seek(0, 1));
    const bool lineEnds = separator == "\r\n";
    const std::string wanted(separator.c_str(), static_cast<std::size_t>(separator.Length()));
    std::size_t sepLength = wanted.size();
    bool pendingEnd = false;
    for (;;) {
        if (!Has(kBufferLoaded) && !ReadBuffer()) {
            return Chaine(result.data(), static_cast<int>(result.size()));
        }
        if (m_Valid == 0) {
            break;
        }
        if (m_InnerOffset < m_Valid) {
            result.append(m_Buffer + m_InnerOffset, m_Valid - m_InnerOffset);
        }
        // Searched again from the beginning, so that a separator cut by the
        // end of a window is still found.
        std::size_t pos = std::string::npos;
        if (lineEnds) {
            pos = result.find_first_of("\r\n");
            pendingEnd = pos != std::string::npos && pos + 1 == result.size();
            if (pendingEnd) {
                pos = std::string::npos;
            } else if (pos != std::string::npos) {
                const char next = result[pos + 1];
                sepLength = next == '\n' && result[pos] != '\n' ? 2 : 1;
            }
        } else if (!wanted.empty()) {
            pos = result.find(wanted);
        }
        if (pos != std::string::npos) {
            result.resize(pos);
            Seek(static_cast<long>(start + pos + sepLength), 0);
            return Chaine(result.data(), static_cast<int>(result.size()));
        }
        // On to the next window. A window changed by Write goes out first:
        // the next load reads over it.
        WriteBuffer();
        m_BlockOffset += m_Valid;
        m_InnerOffset = 0;
        Set(kBufferLoaded, false);
    }
    if (pendingEnd) {
        result.pop_back();
        Seek(static_cast<long>(start + result.size() + 1), 0);
    }
    return Chaine(result.data(), static_cast<int>(result.size()));
}

int EBufferedFile::WriteLine(const Chaine& text, const Chaine& separator) {
    Chaine line = text + separator;
    return Write(const_cast<char*>(line.c_str()), static_cast<unsigned long>(line.Length()));
}
