// The index file's format side: header, descriptors, page input and output,
// creation and opening.
#include "nvk/storage/index_file.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "nvk/storage/memory_file.h"
#include "os/api/file.h"
#include "storage/index_entries.h"
#include "storage/index_format.h"
#include "storage/index_keys.h"
#include "storage/mapped_file.h"

namespace fmt = nvk::index_format;

namespace {

constexpr std::uint64_t kUnknown = ~std::uint64_t{0};
constexpr std::int64_t kLongestSeek = 0x7FFFFFFF;

}  // namespace

std::uint32_t EIndexFile::PageSize() const {
    return m_Header->PageSize;
}

std::uint64_t EIndexFile::PageOffset(std::uint32_t page) const {
    return fmt::kHeaderSize + static_cast<std::uint64_t>(page - 1) * PageSize();
}

void EIndexFile::SeekTo(std::uint64_t offset) {
    if (m_FileAt == offset) {
        return;
    }
    if (m_FileAt == kUnknown) {
        m_FileAt = m_File->Seek(0, 0);
    }
    // Relative moves, in steps a 32-bit seek can make.
    while (m_FileAt != offset) {
        const std::int64_t delta =
            std::clamp(static_cast<std::int64_t>(offset - m_FileAt), -kLongestSeek, kLongestSeek);
        const std::uint64_t expected = m_FileAt + delta;
        const unsigned long landed = m_File->Seek(static_cast<long>(delta), 1);
        if (landed != static_cast<std::uint32_t>(expected)) {
            m_FileAt = kUnknown;
            return;
        }
        m_FileAt = expected;
    }
}

// The file's size when this object last asked, or as its own writes made it.
// Mapped bytes are touched only below it: past the end of a file cut by
// another program, a mapped window has no bytes to give.
std::uint64_t EIndexFile::KnownSize() const {
    return m_FileSize;
}

void EIndexFile::SetFileSize(std::uint64_t size) {
    m_FileSize = size;
    m_FilePages = PagesIn(size);
}

// Bytes of a named file come from its mapped windows where they can, and
// from the file otherwise: the two are one and the same copy of the file.
bool EIndexFile::ReadAt(std::uint64_t offset, void* buffer, std::uint32_t size) {
    if (m_Map != nullptr) {
        if (const char* bytes = m_Map->At(offset, size, KnownSize())) {
            std::memcpy(buffer, bytes, size);
            return true;
        }
    }
    SeekTo(offset);
    if (m_FileAt != offset || m_File->Read(buffer, size) != 1) {
        m_FileAt = kUnknown;
        return false;
    }
    m_FileAt += size;
    return true;
}

bool EIndexFile::WriteAt(std::uint64_t offset, const void* buffer, std::uint32_t size) {
    if (m_Map != nullptr) {
        if (char* bytes = m_Map->At(offset, size, KnownSize())) {
            std::memcpy(bytes, buffer, size);
            return true;
        }
    }
    SeekTo(offset);
    if (m_FileAt != offset || m_File->Write(const_cast<void*>(buffer), size) != 1) {
        m_FileAt = kUnknown;
        return false;
    }
    m_FileAt += size;
    return true;
}

std::uint32_t EIndexFile::PagesInFile() {
    SetFileSize(m_File->Taille());
    return m_FilePages;
}

std::uint32_t EIndexFile::PagesIn(std::uint64_t size) const {
    return size < fmt::kHeaderSize
               ? 0
               : static_cast<std::uint32_t>((size - fmt::kHeaderSize) / PageSize());
}

// The count is asked of the file again only when a page seems to lie past it,
// since another object may have grown the file.
bool EIndexFile::PageInFile(std::uint32_t page) {
    if (page == 0) {
        return false;
    }
    if (page > m_FilePages) {
        PagesInFile();
    }
    return page <= m_FilePages;
}

void EIndexFile::ReadHeader() {
    if (m_File != nullptr) {
        ReadAt(0, m_Header, fmt::kHeaderSize);
    }
}

void EIndexFile::WriteHeader() {
    if (m_File != nullptr) {
        WriteAt(0, m_Header, fmt::kHeaderSize);
    }
}

bool EIndexFile::GetPage(unsigned long page) {
    if (m_File == nullptr || m_Page == nullptr) {
        return false;
    }
    if (page == 0) {
        page = m_PageNo;
    }
    if (!PageInFile(static_cast<std::uint32_t>(page))) {
        return false;
    }
    m_PageNo = static_cast<std::uint32_t>(page);
    m_Position = static_cast<std::uint32_t>(PageOffset(m_PageNo));
    if (!ReadAt(m_Position, m_Page, PageSize())) {
        m_PageNo = 0;  // the buffer holds no page now
        return false;
    }
    return true;
}

// A page for reading only: in place in the file's mapping where it can be,
// copied to m_Page otherwise. Null for a page that is not in the file.
const char* EIndexFile::PeekPage(std::uint32_t page) {
    if (m_Map != nullptr && PageInFile(page)) {
        if (const char* bytes = m_Map->At(PageOffset(page), PageSize(), KnownSize())) {
            return bytes;
        }
    }
    return page != 0 && GetPage(page) ? m_Page : nullptr;
}

// Makes m_Page hold a page that PeekPage gave. A view is read again by its
// number, not copied from: mapping another page since may have moved it.
bool EIndexFile::HoldPage(std::uint32_t page, const char* bytes) {
    return (bytes == m_Page && m_PageNo == page) || GetPage(page);
}

bool EIndexFile::WritePage() {
    return WriteAt(m_Position, m_Page, PageSize());
}

void EIndexFile::Seek(unsigned long page) {
    if (page != 0 && m_File != nullptr) {
        m_PageNo = static_cast<std::uint32_t>(page);
        m_Position = static_cast<std::uint32_t>(PageOffset(m_PageNo));
        SeekTo(m_Position);
    }
}

void EIndexFile::UpdatePage() {
    if (m_File != nullptr) {
        WritePage();
    }
}

// Takes the head of the free list, or a page at the end of the file. A head
// that is not a freed page inside the file (a damaged list, or a cycle that
// comes back to a page already taken) gives 0, as does a failed write.
unsigned long EIndexFile::NouvellePage() {
    if (m_File == nullptr || m_Page == nullptr) {
        return 0;
    }
    std::memset(m_Page, 0, PageSize());
    fmt::Header& header = *m_Header;
    std::uint32_t page = header.FreePage;
    if (page != 0) {
        std::uint32_t words[2] = {};
        if (!PageInFile(page) || !ReadAt(PageOffset(page), words, sizeof words) ||
            words[0] != fmt::kFreePage) {
            return 0;
        }
        header.FreePage = words[1];
    } else {
        // The pages in use are then all the pages of the file.
        page = PagesInFile() + 1;
    }
    m_PageNo = page;
    m_Position = static_cast<std::uint32_t>(PageOffset(page));
    if (!WritePage()) {
        return 0;
    }
    SetFileSize(std::max(m_FileSize, PageOffset(page) + PageSize()));
    ++header.PageCount;
    return page;
}

void EIndexFile::DelPage() {
    if (m_File == nullptr) {
        return;
    }
    fmt::Store32(m_Page, fmt::kFreePage);
    fmt::Store32(m_Page + 4, m_Header->FreePage);
    WriteAt(m_Position, m_Page, 8);
    --m_Header->PageCount;
    m_Header->FreePage = m_PageNo;
}

void EIndexFile::CalculMinMax(int index, int* min, int* max) const {
    const int entrySize = Desc(index).EntrySize;
    *min = entrySize;
    *max = entrySize * (fmt::CountOf(m_Page) - 1);
}

long EIndexFile::CompareIndexUnknow(int, void* a, void* b, int keySize) {
    return nvk::CompareBytes(a, b, keySize);
}

void EIndexFile::AllocateKeyBuffer() {
    delete[] m_KeyBuffer;
    m_KeyBuffer = nullptr;
    int largest = 0;
    for (const fmt::Descriptor& d : m_Header->Indexes) {
        largest = std::max<int>(largest, d.KeySize);
    }
    if (largest != 0) {
        m_KeyBuffer = new char[largest + fmt::kPadding]();
    }
}

void EIndexFile::Release() {
    delete m_Map;
    m_Map = nullptr;
    if (m_File != nullptr) {
        m_File->Close();
    }
    delete[] m_KeyBuffer;
    delete[] m_Page;
    delete m_Header;
    delete m_File;
    m_KeyBuffer = nullptr;
    m_Page = nullptr;
    m_Header = nullptr;
    m_File = nullptr;
    m_FileAt = kUnknown;
    m_FilePages = 0;
    m_FileSize = 0;
}

int EIndexFile::Create(const char* name, unsigned long pageSize) {
    if (m_File != nullptr || pageSize < fmt::kPageHeaderSize || pageSize > fmt::kMaxPageSize) {
        return 0;
    }
    if (name != nullptr) {
        auto file = std::make_unique<EBaseFile>();
        file->Open(name, EBaseFile::kRead | EBaseFile::kWrite | EBaseFile::kCreate, 0);
        if (file->Taille() != 0) {
            return 0;
        }
        m_File = file.release();
    } else {
        m_File = new EMemoryFile;
        m_File->Open(nullptr, EBaseFile::kRead | EBaseFile::kWrite, 0);
    }
    m_InMemory = name == nullptr;
    m_FileAt = kUnknown;
    m_Header = new fmt::Header{};
    m_Header->Magic = fmt::kMagic;
    m_Header->PageSize = static_cast<std::uint32_t>(pageSize);
    WriteHeader();
    if (!m_InMemory) {
        m_File->Flush();
        Release();
    }
    return 1;
}

namespace {

// The gate against a damaged header: every page and entry the engine will
// touch must then fit the buffers it allocates.
bool SoundHeader(const fmt::Header& header, std::uint64_t size) {
    const std::uint32_t pageSize = header.PageSize;
    if (header.Magic != fmt::kMagic || pageSize < fmt::kPageHeaderSize ||
        pageSize > fmt::kMaxPageSize || size < fmt::kHeaderSize ||
        (size - fmt::kHeaderSize) % pageSize != 0 ||
        header.PageCount > (size - fmt::kHeaderSize) / pageSize ||
        header.IndexCount > fmt::kMaxIndexes) {
        return false;
    }
    for (int i = 0; i < header.IndexCount; ++i) {
        const fmt::Descriptor& d = header.Indexes[i];
        if (d.KeySize > 251 || d.EntrySize != d.KeySize + 4 || d.MaxEntries < 2 ||
            d.MaxEntries % 2 != 0 || d.MaxEntries > fmt::MaxEntries(pageSize, d.EntrySize)) {
            return false;
        }
    }
    return true;
}

}  // namespace

int EIndexFile::Open(const char* name) {
    if ((m_File != nullptr) == (name != nullptr)) {
        return 0;
    }
    if (name != nullptr) {
        m_File = new EBaseFile;
        m_File->Open(name, EBaseFile::kRead | EBaseFile::kWrite, 1);
        m_InMemory = false;
        m_FileAt = kUnknown;
        const std::uint64_t size = m_File->Taille();
        if (size == 0) {
            Release();
            return 0;
        }
        m_Header = new fmt::Header{};
        if (size < fmt::kHeaderSize) {
            Release();
            return 0;
        }
        ReadHeader();
        if (!SoundHeader(*m_Header, size)) {
            Release();
            return 0;
        }
    }
    delete[] m_Page;
    m_Page = new char[PageSize() + fmt::kPadding]();
    m_Position = fmt::kHeaderSize;
    m_PageNo = 1;
    PagesInFile();
    if (!m_InMemory) {
        delete m_Map;
        m_Map = new nvk::MappedFile(m_File->Handle());
    }
    AllocateKeyBuffer();
    return 1;
}

// Another object, in this process or another, may have changed the file
// since this one last looked. Pages are always read from the file (through
// its mapping, which the system keeps in step with every write), so only the
// header that this object holds can be stale: it is compared with the file's.
// The size is asked first, so that nothing is read from a window over bytes
// that the file has lost since.
void EIndexFile::Refresh() {
    if (m_File == nullptr || m_InMemory) {
        return;
    }
    const std::uint64_t size = m_File->Taille();
    SetFileSize(size);
    fmt::Header header{};
    if (!ReadAt(0, &header, fmt::kHeaderSize) ||
        std::memcmp(&header, m_Header, fmt::kHeaderSize) == 0) {
        return;
    }
    ReloadHeader(header, size);
}

// A header that no longer fits this object's buffers (damaged, or of another
// page size) is not taken; the object goes on with the one it has.
void EIndexFile::ReloadHeader(const fmt::Header& header, std::uint64_t size) {
    if (!SoundHeader(header, size) || header.PageSize != PageSize()) {
        return;
    }
    int largest = 0;
    int held = 0;
    for (int i = 0; i < fmt::kMaxIndexes; ++i) {
        largest = std::max<int>(largest, header.Indexes[i].KeySize);
        held = std::max<int>(held, Desc(i).KeySize);
    }
    *m_Header = header;
    if (largest > held) {
        AllocateKeyBuffer();
    }
}

int EIndexFile::CreateIndex(int keySize, int keyType, int duplicates) {
    Refresh();
    if (m_File == nullptr || m_Header->IndexCount >= fmt::kMaxIndexes) {
        return 0;
    }
    // Sizes are one byte; a key too long for its entry size to fit one byte,
    // a page that can't hold two entries, or a key shorter than the number
    // its type compares (which would read past every key) makes no index.
    const auto size = static_cast<std::uint8_t>(keySize);
    const auto type = static_cast<std::uint8_t>(keyType);
    const auto entrySize = static_cast<std::uint8_t>(size + 4);
    const std::uint16_t maxEntries = fmt::MaxEntries(PageSize(), entrySize);
    if (size > 251 || maxEntries == 0 || nvk::KeyTypeSize(type, size) > size) {
        return 0;
    }
    fmt::Descriptor& d = Desc(m_Header->IndexCount);
    d = fmt::Descriptor{};
    d.KeySize = size;
    d.EntrySize = entrySize;
    d.KeyType = type;
    d.Duplicates = static_cast<std::uint8_t>(duplicates);
    d.MaxEntries = maxEntries;
    ++m_Header->IndexCount;
    if (!m_InMemory) {
        WriteHeader();
        m_File->Flush();
    }
    AllocateKeyBuffer();
    return m_Header->IndexCount;
}

void EIndexFile::Close() {
    if (m_File != nullptr) {
        m_File->Flush();
        Release();
    }
}

unsigned long EIndexFile::Nombre(int index) {
    Refresh();
    if (m_File == nullptr || index < 1 || index > m_Header->IndexCount) {
        return 0;
    }
    return Desc(index - 1).KeyCount;
}
