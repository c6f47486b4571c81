#include "nvk/storage/data_file.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "nvk/storage/memory_file.h"
#include "storage/data_format.h"
#include "storage/mapped_file.h"

using nvk::data_format::DeletedMark;
using nvk::data_format::Header;
using nvk::data_format::kDeleted;
using nvk::data_format::kHeaderSize;

namespace {

// The part of a variable record's payload that the deleted mark covers.
constexpr std::uint32_t kMinPayload = sizeof(DeletedMark) - 4;
// The record buffer always has room for the first word and the deleted mark,
// so that tiny records are tested without reading past it.
constexpr std::uint32_t kMinBuffer = sizeof(DeletedMark);

void* const kVariableFile = reinterpret_cast<void*>(~std::uintptr_t{0});

}  // namespace

bool EDataFile::Fixed() const {
    return m_Header->RecordSize != 0;
}

std::uint32_t EDataFile::RecordSize() const {
    return m_Header->RecordSize;
}

std::uint32_t EDataFile::Slots() const {
    const std::uint64_t size = FileSize();
    return size <= kHeaderSize ? 0
                               : static_cast<std::uint32_t>((size - kHeaderSize) / RecordSize());
}

unsigned long EDataFile::Nombre() const {
    return m_Header != nullptr ? m_Header->RecordCount : 0;
}

void EDataFile::VideBuf() {
    if (m_Buffer != nullptr) {
        std::memset(m_Buffer, 0, std::max(RecordSize(), kMinBuffer));
    }
}

bool EDataFile::OnRecord() const {
    return OnRecordIn(FileSize());
}

bool EDataFile::OnRecordIn(std::uint64_t size) const {
    if (Fixed()) {
        const std::uint64_t offset =
            kHeaderSize + static_cast<std::uint64_t>(m_Courant - 1) * RecordSize();
        return m_Courant >= 1 && offset + RecordSize() <= size && m_Position == offset;
    }
    return m_Courant >= kHeaderSize && m_Courant + std::uint64_t{4} <= size &&
           m_Position == m_Courant;
}

void EDataFile::SeekAbsolute(std::uint32_t offset) {
    m_Position = static_cast<std::uint32_t>(m_File->Seek(static_cast<long>(offset), 0));
}

void EDataFile::SeekBack(std::uint32_t bytes) {
    m_Position = static_cast<std::uint32_t>(m_File->Seek(-static_cast<long>(bytes), 1));
}

void EDataFile::ReadHeader() {
    if (m_File != nullptr) {
        m_File->Seek(0, 0);
        m_File->Read(m_Header, kHeaderSize);
    }
}

// A named file's header goes through its mapped window, which is the file
// for every reader; the flush then writes it to the disk as it would a
// written header.
void EDataFile::WriteHeader(std::uint64_t size) {
    if (m_File == nullptr) {
        return;
    }
    char* mapped = m_Map != nullptr ? m_Map->At(0, kHeaderSize, size) : nullptr;
    if (mapped != nullptr) {
        std::memcpy(mapped, m_Header, kHeaderSize);
        m_File->Seek(kHeaderSize, 0);
    } else {
        m_File->Seek(0, 0);
        m_File->Write(m_Header, kHeaderSize);
    }
    m_File->Flush();
}

void EDataFile::Release() {
    delete m_Map;
    m_Map = nullptr;
    if (m_File != nullptr) {
        m_File->Close();
    }
    delete[] m_Buffer;
    delete m_Header;
    delete m_File;
    m_Buffer = nullptr;
    m_Header = nullptr;
    m_File = nullptr;
}

int EDataFile::Create(const char* name, unsigned long recordSize) {
    // Fixed records shorter than the deleted mark could not be deleted without
    // the mark running into the next record, so such files are not made.
    if (m_File != nullptr || recordSize > kMaxRecordSize ||
        (recordSize != 0 && recordSize < kMinRecordSize)) {
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
    m_Header = new Header{};
    m_Header->Magic = nvk::data_format::kMagic;
    m_Header->RecordSize = static_cast<std::uint32_t>(recordSize);
    WriteHeader(0);
    if (name != nullptr) {
        Release();
    }
    return 1;
}

void* EDataFile::Open(const char* name) {
    if ((m_File != nullptr) == (name != nullptr)) {
        return nullptr;
    }
    if (m_File == nullptr) {
        m_File = new EBaseFile;
        m_File->Open(name, EBaseFile::kRead | EBaseFile::kWrite, 1);
        const std::uint64_t size = m_File->Taille();
        // An empty file, and one too short to hold the header, whose short
        // read would leave the rest of the header zero: a two-byte file with
        // the magic number would pass for a variable-length file, and its
        // records would be written over its header.
        if (size < kHeaderSize) {
            Release();
            return nullptr;
        }
        m_Header = new Header{};
        ReadHeader();
        // The one gate against damage: a bad number, records that do not fill
        // the file exactly, or more live records than there are slots.
        bool sound = m_Header->Magic == nvk::data_format::kMagic;
        if (sound && Fixed()) {
            sound = RecordSize() <= kMaxRecordSize && (size - kHeaderSize) % RecordSize() == 0 &&
                    m_Header->RecordCount <= (size - kHeaderSize) / RecordSize();
        }
        if (!sound) {
            Release();
            return nullptr;
        }
        m_Map = new nvk::MappedFile(m_File->Handle());
    }
    SeekAbsolute(kHeaderSize);
    m_Courant = 1;
    if (Fixed()) {
        m_Buffer = new char[std::max(RecordSize(), kMinBuffer)]();
        return m_Buffer;
    }
    m_Courant = kHeaderSize;
    return kVariableFile;
}

void EDataFile::Close() {
    if (m_File != nullptr) {
        m_File->Flush();
        Release();
    }
}

void EDataFile::Seek(unsigned long position) {
    if (position != 0 && m_File != nullptr) {
        SeekIn(position, FileSize());
    }
}

void EDataFile::SeekIn(unsigned long position, std::uint64_t size) {
    if (position == 0 || m_File == nullptr) {
        return;
    }
    // A position whose record would lie past the records, or in the header,
    // is named but not reached: the file stays where it was, and OnRecord
    // tells Read, Update and Delete that no record is there. Taken in 32 bits,
    // a large record number's offset wraps onto the header, and past the end a
    // write would add a record that the count leaves out.
    m_Courant = static_cast<std::uint32_t>(std::min<unsigned long>(position, 0xFFFFFFFF));
    if (Fixed()) {
        const std::uint64_t offset =
            kHeaderSize + static_cast<std::uint64_t>(m_Courant - 1) * RecordSize();
        if (offset + RecordSize() > size) {
            return;
        }
        const std::int64_t delta = static_cast<std::int64_t>(offset) - m_Position;
        if (delta != 0) {
            m_Position = static_cast<std::uint32_t>(m_File->Seek(static_cast<long>(delta), 1));
        }
    } else if (m_Courant >= kHeaderSize && m_Courant + std::uint64_t{4} <= size) {
        SeekAbsolute(m_Courant);
    }
}

unsigned long EDataFile::GetTaille(unsigned long position) {
    if (m_File == nullptr) {
        return 0;
    }
    if (Fixed()) {
        return RecordSize();
    }
    Seek(position);
    if (!OnRecord()) {
        return ~0UL;  // no record here, as for a deleted one
    }
    std::uint32_t length = 0;
    m_File->Read(&length, sizeof length);
    SeekBack(sizeof length);
    if (length == kDeleted) {
        return ~0UL;
    }
    return static_cast<std::uint32_t>(length - 4);
}

void EDataFile::Read(unsigned long position, void* buffer) {
    if (m_File == nullptr) {
        return;
    }
    if (Fixed()) {
        const std::uint64_t size = FileSize();
        SeekIn(position, size);
        // A number with no record gives an empty buffer, as at the end of a
        // walk, rather than the record read before.
        if (!OnRecordIn(size)) {
            VideBuf();
            return;
        }
        // From the mapped window the file position stays at the record, as
        // the read and the seek back leave it.
        const std::uint32_t start = m_Position;
        const char* mapped = m_Map != nullptr ? m_Map->At(start, RecordSize(), size) : nullptr;
        if (mapped != nullptr) {
            std::memcpy(m_Buffer, mapped, RecordSize());
        } else {
            m_File->Read(m_Buffer, RecordSize());
            SeekAbsolute(start);
        }
        return;
    }
    Seek(position);
    if (!OnRecord()) {
        return;
    }
    std::uint32_t length = 0;
    m_File->Read(&length, sizeof length);
    // A deleted or damaged length word has no payload to give.
    if (length >= 4 && length != kDeleted) {
        m_File->Read(buffer, length - 4);
    }
    SeekAbsolute(m_Courant);
}

// Both modes write the record's whole stored size, whatever `size` says: a
// record cannot change length.
void EDataFile::Update(void* buffer, unsigned long /*size*/) {
    if (m_File == nullptr || !OnRecord()) {
        return;
    }
    if (Fixed()) {
        m_File->Write(m_Buffer, RecordSize());
        SeekBack(RecordSize());
        m_File->Flush();
        return;
    }
    // A record that does not lie inside the file is left alone rather than
    // letting the write grow it.
    std::uint32_t length = 0;
    m_File->Read(&length, sizeof length);
    if (length >= 4 && length != kDeleted &&
        static_cast<std::uint64_t>(m_Courant) + length <= FileSize()) {
        m_File->Write(buffer, length - 4);
    }
    SeekAbsolute(m_Courant);
    m_File->Flush();
}

bool EDataFile::TakeFreeHead(std::uint64_t size, std::uint32_t& link, std::uint32_t& length) {
    const std::uint32_t head = m_Header->FreeHead;
    bool inside = Fixed() ? head <= Slots()
                          : head >= kHeaderSize && static_cast<std::uint64_t>(head) + 12 <= size;
    DeletedMark mark{};
    if (inside) {
        SeekIn(head, size);
        inside = m_File->Read(&mark, sizeof mark) == 1;
        SeekAbsolute(Fixed() ? kHeaderSize + (head - 1) * RecordSize() : head);
    }
    if (!inside || mark.Mark != kDeleted ||
        (!Fixed() &&
         (mark.Length < sizeof mark || static_cast<std::uint64_t>(head) + mark.Length > size))) {
        // A head that is not a deleted record would hand out a live one, and
        // a cycle in the list ends here too: the list is forgotten, and its
        // records stay marked as deleted.
        m_Header->FreeHead = 0;
        return false;
    }
    link = mark.Next;
    length = mark.Length;
    return true;
}

std::uint64_t EDataFile::AppendVariable(void* buffer, std::uint32_t payload) {
    const std::uint64_t size = m_File->Seek(0, 2);
    SeekAbsolute(static_cast<std::uint32_t>(size));
    m_Courant = m_Position;
    // A payload shorter than the part of the record that the deleted mark
    // covers is stored padded with zeros to it, so that the record can be
    // deleted without the mark running into the next record. It then reads
    // back padded, as a record placed in a larger hole reads back the hole's
    // size; the format stays as it is, and other readers see a plain record.
    const std::uint32_t padding = payload < kMinPayload ? kMinPayload - payload : 0;
    std::uint32_t stored = payload + padding + 4;
    m_File->Write(&stored, sizeof stored);
    m_File->Write(buffer, payload);
    if (padding != 0) {
        char zeros[kMinPayload] = {};
        m_File->Write(zeros, padding);
    }
    return size;
}

void EDataFile::Insere(void* buffer, unsigned long size) {
    if (m_File == nullptr) {
        return;
    }
    std::uint32_t link = 0;
    std::uint32_t length = 0;
    const auto payload = static_cast<std::uint32_t>(size);
    // The file's size as this insertion finds it: asked once, from the free
    // list's check or from the move to the end.
    std::uint64_t fileSize = m_Header->FreeHead != 0 ? FileSize() : 0;
    if (m_Header->FreeHead != 0 && TakeFreeHead(fileSize, link, length)) {
        if (Fixed()) {
            m_Header->FreeHead = link;
            m_File->Write(m_Buffer, RecordSize());
        } else if (length >= payload + 4ULL) {
            // The record keeps the size of the hole.
            m_Header->FreeHead = link;
            m_File->Write(&length, sizeof length);
            m_File->Write(buffer, payload);
        } else {
            fileSize = AppendVariable(buffer, payload);
        }
        ++m_Header->RecordCount;
    } else if (Fixed()) {
        fileSize = m_File->Seek(0, 2);
        m_Position = static_cast<std::uint32_t>(fileSize);
        m_File->Write(m_Buffer, RecordSize());
        ++m_Header->RecordCount;
        m_Courant = m_Header->RecordCount;
    } else {
        fileSize = AppendVariable(buffer, payload);
        ++m_Header->RecordCount;
    }
    WriteHeader(fileSize);
    SeekAbsolute(m_Position);
}

void EDataFile::Delete() {
    if (m_File == nullptr) {
        return;
    }
    // Only a live record is deleted. With no record at the position (past
    // the end, or a file with no record at all) the mark would grow the file;
    // with none counted the count would wrap; a record already deleted would
    // tie the free list into a cycle.
    const std::uint64_t size = FileSize();
    if (!OnRecordIn(size) || m_Header->RecordCount == 0) {
        return;
    }
    std::uint32_t first = 0;
    m_File->Read(&first, sizeof first);
    SeekAbsolute(m_Position);
    if (first == kDeleted) {
        return;
    }
    // A record shorter than the mark, in a file made elsewhere, is left
    // alone: marking it would write over the next record.
    const bool holdsMark =
        Fixed() ? RecordSize() >= sizeof(DeletedMark)
                : first >= sizeof(DeletedMark) && m_Courant + std::uint64_t{first} <= size;
    if (!holdsMark) {
        return;
    }
    DeletedMark mark{kDeleted, m_Header->FreeHead, Fixed() ? 0 : first};
    m_File->Write(&mark, sizeof mark);
    m_File->Flush();
    --m_Header->RecordCount;
    m_Header->FreeHead = m_Courant;
    WriteHeader(size);
    SeekAbsolute(m_Position);
}

int EDataFile::First() {
    if (m_File == nullptr) {
        return 0;
    }
    if (Fixed()) {
        m_Courant = 0;
        return Next();
    }
    SeekAbsolute(kHeaderSize);
    m_Courant = kHeaderSize;
    if (FileSize() <= kHeaderSize) {
        return 0;
    }
    if (GetTaille(kHeaderSize) == ~0UL) {
        return Next();
    }
    return 1;
}

int EDataFile::Next() {
    if (m_File == nullptr) {
        return 0;
    }
    if (Fixed()) {
        const std::uint32_t slots = Slots();
        while (m_Courant < slots) {
            Read(m_Courant + 1, nullptr);
            std::uint32_t first = 0;
            std::memcpy(&first, m_Buffer, sizeof first);
            if (first != kDeleted) {
                return 1;
            }
        }
        VideBuf();
        return 0;
    }
    // From a deleted record the step is 3 and the walk leaves the chain of
    // records; a length word under 4 is damage and ends the walk, so that it
    // always moves forward.
    const auto step = static_cast<std::uint32_t>(GetTaille(m_Courant) + 4);
    if (step < 4 && step != 3) {
        return 0;
    }
    if (static_cast<std::uint64_t>(m_Courant) + step >= FileSize()) {
        return 0;
    }
    Seek(m_Courant + step);
    return 1;
}

int EDataFile::Last() {
    if (m_File == nullptr) {
        return 0;
    }
    if (Fixed() && m_Header->RecordCount != 0) {
        m_Courant = Slots() + 1;
        return Prev();
    }
    VideBuf();
    return 0;
}

int EDataFile::Prev() {
    if (m_File == nullptr || !Fixed()) {
        return 0;
    }
    while (m_Courant > 1) {
        Read(m_Courant - 1, nullptr);
        std::uint32_t first = 0;
        std::memcpy(&first, m_Buffer, sizeof first);
        if (first != kDeleted) {
            return 1;
        }
    }
    VideBuf();
    return 0;
}
