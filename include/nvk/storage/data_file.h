// A file of records, fixed-length (numbered from 1) or variable-length
// (addressed by offset), with deleted records chained into a free list. Works
// on a named file or, without a name, in memory.
#pragma once

#include <cstdint>

#include "nvk/nvkutil_export.h"
#include "nvk/storage/base_file.h"

namespace nvk {
class MappedFile;
}
namespace nvk::data_format {
struct Header;
}

class NVKUTIL_EXPORT EDataFile {
public:
    // The largest record size that Create makes and Open accepts: Open takes a
    // buffer of one record, and a damaged header must not make it ask for
    // gigabytes.
    static constexpr unsigned long kMaxRecordSize = 16ul << 20;
    // The smallest fixed record size that Create makes: a deleted record holds
    // the 12-byte deleted mark. Files with smaller records open and read, but
    // their records are not deleted.
    static constexpr unsigned long kMinRecordSize = 12;

    EDataFile() : m_File(nullptr) {}
    // Copies share the file, the buffer and the header: copy closed objects.
    EDataFile(const EDataFile&) = default;
    EDataFile& operator=(const EDataFile&) = default;
    ~EDataFile() { Close(); }

    // The order of these virtual operations is part of the class's interface.
    virtual int Create(const char* name, unsigned long recordSize);
    // The record buffer of a fixed-length file, all bits set for a
    // variable-length file, null on failure.
    virtual void* Open(const char* name);
    virtual void Close();
    virtual int SwapToFile(const char*) { return 0; }
    virtual int SwapToMemory(const char*) { return 0; }
    virtual void Insere(void* buffer, unsigned long size);
    virtual void Read(unsigned long position, void* buffer);
    virtual void Update(void* buffer, unsigned long size);
    virtual void Delete();
    virtual int First();
    virtual int Next();
    virtual int Last();
    virtual int Prev();

    void* Adresse() const { return m_Buffer; }
    unsigned long Courant() const { return m_Courant; }
    unsigned long Nombre() const;
    void VideBuf();
    EBaseFile* getFile() const { return m_File; }
    // The payload size of a record: the record size of a fixed-length file;
    // in a variable-length file, all bits set for a deleted record or a
    // position with no record.
    unsigned long GetTaille(unsigned long position);
    void Seek(unsigned long position);

protected:
    void ReadHeader();
    // `size` is the file's size as the operation found it (0: unknown), which
    // holds the header's window: the system is asked once per operation.
    void WriteHeader(std::uint64_t size);

    EBaseFile* m_File;
    char* m_Buffer = nullptr;
    std::uint32_t m_Position = 0;
    std::uint32_t m_Courant = 0;
    nvk::data_format::Header* m_Header = nullptr;

private:
    bool Fixed() const;
    std::uint32_t RecordSize() const;
    std::uint64_t FileSize() const { return m_File->Taille(); }
    std::uint32_t Slots() const;
    // Whether the file position stands on a record inside the file: a fixed
    // record number within the slots, or a variable offset past the header
    // with its length word inside the file.
    bool OnRecord() const;
    bool OnRecordIn(std::uint64_t size) const;
    // Seek, against a file size the caller has just asked.
    void SeekIn(unsigned long position, std::uint64_t size);
    void SeekAbsolute(std::uint32_t offset);
    void SeekBack(std::uint32_t bytes);
    // Writes a variable-length record at the end of the file, whose size
    // before it is returned.
    std::uint64_t AppendVariable(void* buffer, std::uint32_t payload);
    // Reads the mark of the free head in a file of `size` bytes; false if the
    // head is not a deleted record inside the file, in which case the list is
    // dropped.
    bool TakeFreeHead(std::uint64_t size, std::uint32_t& link, std::uint32_t& length);
    void Release();

    nvk::MappedFile* m_Map = nullptr;  // windows of a named file
};
