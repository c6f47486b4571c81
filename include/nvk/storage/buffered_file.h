// A file with one window of its content in memory, for sequential reading
// and writing of text and binary files, and line reading and writing. The
// window always starts at a multiple of its size. A file opened for writing
// only appends: its offsets count from the size it had when opened.
#pragma once

#include <cstdint>
#include <memory>

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"
#include "nvk/storage/base_file.h"

class NVKUTIL_EXPORT EBufferedFile : public EBaseFile {
public:
    // Bits of m_Flags.
    static constexpr std::uint32_t kBufferLoaded = 1;  // the window holds its block
    static constexpr std::uint32_t kBufferDirty = 2;   // the window has unwritten bytes
    static constexpr std::uint32_t kAtEnd = 4;         // the position is at or past the end
    static constexpr std::uint32_t kAppendOnly = 8;    // opened for writing without reading
    static constexpr std::uint32_t kFailed = 16;       // the last window transfer failed

    // Never opened: reads nothing and reports failure.
    EBufferedFile();
    // Copies share the window and the handle: copy closed objects. The window
    // is released by the last copy that holds it.
    EBufferedFile(const EBufferedFile&) = default;
    EBufferedFile& operator=(const EBufferedFile&) = default;

    ~EBufferedFile() override;
    void Close() override;
    void Flush() override;
    int Open(const char* name, int mode, int share) override;
    int Read(void* buffer, unsigned long size) override;
    // Whence 2 counts back from the end: a positive offset moves backwards.
    unsigned long Seek(long offset, unsigned long whence) override;
    void SetTaille(unsigned long size) override;
    // Counts the bytes of the window that are not written out yet.
    unsigned long Taille() const override;
    int Write(void* buffer, unsigned long size) override;

    // Rounded up to a multiple of 4096; drops the window without writing it.
    void SetBufferSize(unsigned long size);
    // The text up to the separator, which is passed over. With "\r\n", any of
    // "\r\n", "\r" or "\n" ends a line. An empty line and the end of the file
    // both give an empty value.
    Chaine ReadLine(const Chaine& separator);
    int WriteLine(const Chaine& text, const Chaine& separator);

protected:
    void InitBuffer(unsigned long offset);
    bool ReadBuffer();
    bool WriteBuffer();
    void RealOffsetToInternal(unsigned long offset);

    char* m_Buffer;
    std::uint32_t m_BufferSize;
    std::uint32_t m_Valid;
    std::uint32_t m_BlockOffset;
    std::uint32_t m_InnerOffset;
    std::uint32_t m_BaseOffset;
    std::uint32_t m_Flags;

private:
    bool Has(std::uint32_t flag) const { return (m_Flags & flag) != 0; }
    void Set(std::uint32_t flag, bool on) { m_Flags = on ? (m_Flags | flag) : (m_Flags & ~flag); }
    void SeekReal(std::uint32_t offset);
    void ReleaseBuffer();
    void AllocateBuffer();

    // Owns what m_Buffer points to, shared by copies: a closed object may hold
    // a window (SetBufferSize makes it before Open), and each copy would
    // otherwise free it again.
    std::shared_ptr<char[]> m_Window;
};
