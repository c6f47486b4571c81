// Up to 16 B+-tree indexes in one file of equal pages, or in memory when no
// file name is given. Leaves hold every key with a caller's 32-bit value (a
// record number or offset of a record file); the caller keeps the two files
// in step. One object has one cursor and one page buffer, over all indexes.
#pragma once

#include <cstdint>

#include "nvk/nvkutil_export.h"
#include "nvk/storage/base_file.h"

namespace nvk {
class MappedFile;
}
namespace nvk::index_format {
struct Header;
struct Descriptor;
}  // namespace nvk::index_format

class NVKUTIL_EXPORT EIndexFile {
public:
    // Results of Insere, Delete and Update.
    static constexpr int kDone = 0;
    static constexpr int kDuplicate = 1;
    static constexpr int kBadIndex = 79;
    static constexpr int kDamaged = 128;  // also: the entry to remove is missing
    static constexpr int kNoFile = 255;

    EIndexFile() = default;
    // Copies share the file, the buffers and the header: copy closed objects.
    EIndexFile(const EIndexFile&) = default;
    EIndexFile& operator=(const EIndexFile&) = default;
    virtual ~EIndexFile() { Close(); }

    // The order of these virtual operations is part of the class's interface.
    // Indexes are numbered from 1, as CreateIndex returns them.
    virtual int Create(const char* name, unsigned long pageSize);
    virtual int Open(const char* name);
    virtual void Close();
    virtual int SwapToFile(const char*) { return 0; }
    virtual int SwapToMemory(const char*) { return 0; }
    virtual int CreateIndex(int keySize, int keyType, int duplicates);
    virtual int Delete(int index, void* key, unsigned long value);
    virtual int Insere(int index, void* key, unsigned long value);
    virtual int Update(int index, void* oldKey, void* newKey, unsigned long value);
    // The searching operations return the value of the entry they deliver,
    // and 0 when they deliver none; its key is then at AdrCle().
    virtual unsigned long Equal(int index, void* key);
    virtual unsigned long First(int index);
    virtual unsigned long GreaterEqual(int index, void* key);
    virtual unsigned long Last(int index);
    virtual unsigned long LessEqual(int index, void* key);
    // Next and Prev share one "next" position, decided when an entry is
    // delivered: a change of direction does not turn back at once.
    virtual unsigned long Next();
    virtual unsigned long Prev();
    virtual unsigned long GetAt(int index, unsigned long rank, void* prefix,
                                unsigned long prefixSize);
    virtual unsigned long GetAt(int index, unsigned long rank);
    // The rank of the first entry not below the prefix; -1 for none.
    virtual long GetFocus(int index, void* prefix, unsigned long prefixSize);

    void* AdrCle() const { return m_KeyBuffer; }
    unsigned long Nombre(int index);
    unsigned long Nombre(int index, void* prefix, unsigned long prefixSize);

protected:
    // The order of keys of type 255, for a derived class; by default
    // keySize bytes compared as unsigned bytes.
    virtual long CompareIndexUnknow(int index, void* a, void* b, int keySize);

    // Header and pages. GetPage, NouvellePage and the searches report pages
    // that can't be part of a sound tree (past the end of the file, freed,
    // with more entries than a page holds) as failures rather than follow them.
    void ReadHeader();
    void WriteHeader();
    bool GetPage(unsigned long page);
    void UpdatePage();
    unsigned long NouvellePage();
    void DelPage();
    void Seek(unsigned long page);
    void CalculMinMax(int index, int* min, int* max) const;
    long CompareIndex(int index, const void* a, const void* b);

    // Searching (index from 0).
    int CherchePage(int index, void* key, unsigned long level, int firstOfEqual, int stopOnEqual);
    char* GetPosPage(int index, void* key);
    char* GetPosInsPage(int index, void* key);

    // Changing (index from 0; level of the page that receives the change).
    int InsIndex(int index, void* key, unsigned long value, unsigned long level);
    int DelIndex(int index, void* key, unsigned long value, unsigned long level);
    int UpdIndex(int index, void* oldKey, void* newEntry, unsigned long value, unsigned long level);

    // The cursor: the entry last delivered and the one Next or Prev will give.
    int m_Index = 0;
    std::uint32_t m_CurPage = 0;
    int m_CurSlot = 0;
    std::uint32_t m_NextPage = 0;
    int m_NextSlot = 0;
    std::uint32_t m_NextValue = 0;
    char* m_KeyBuffer = nullptr;
    EBaseFile* m_File = nullptr;
    char* m_Page = nullptr;
    std::uint32_t m_Position = 0;  // offset of the page in m_Page
    std::uint32_t m_PageNo = 0;
    bool m_InMemory = false;
    nvk::index_format::Header* m_Header = nullptr;

private:
    enum class Walk { Found, NoPage, OffTheEnd };
    // The order of one index's keys, for the page scans.
    class KeyOrder;

    // Desc and the entries below are inline, in the index file's own
    // storage/index_entries.h.
    nvk::index_format::Descriptor& Desc(int index) const;
    std::uint32_t PageSize() const;
    std::uint64_t PageOffset(std::uint32_t page) const;
    // Moves the file to an offset by relative seeks, skipped when it stands
    // there already.
    void SeekTo(std::uint64_t offset);
    std::uint64_t KnownSize() const;
    void SetFileSize(std::uint64_t size);
    bool ReadAt(std::uint64_t offset, void* buffer, std::uint32_t size);
    bool WriteAt(std::uint64_t offset, const void* buffer, std::uint32_t size);
    std::uint32_t PagesInFile();
    std::uint32_t PagesIn(std::uint64_t size) const;
    bool PageInFile(std::uint32_t page);
    const char* PeekPage(std::uint32_t page);
    bool HoldPage(std::uint32_t page, const char* bytes);
    // Writes m_Page to its place; false if it did not all go out.
    bool WritePage();
    void AllocateKeyBuffer();
    void Release();
    // Takes the header again when another object has changed it; at the
    // start of every public operation.
    void Refresh();
    void ReloadHeader(const nvk::index_format::Header& header, std::uint64_t size);

    // Entries of the page in m_Page.
    char* EntryAt(int index, int slot) const;
    std::uint32_t ValueAt(int index, int slot) const;
    bool SoundPage(int index, unsigned long level) const;
    bool SoundLeaf(int index) const;
    bool StepAlong(int index, std::uint32_t page, unsigned long level, std::uint32_t& steps);
    bool StepToLeaf(int index, std::uint32_t page, std::uint32_t& steps);

    // Whether `index` (from 1) names a defined index with keys; sets m_Index.
    bool Searchable(int index);
    unsigned long Take(int slot);
    void Position(int slot);
    bool LeavePage();
    void ClearNext();
    void NoteForward(int slot);
    void NoteBackward(int slot);
    unsigned long Step(bool forward);
    Walk WalkPrefix(int index, const void* prefix, unsigned long prefixSize, bool wholeKey,
                    int& slot);

    int ChangeCheck(int index);
    int Finish(int result, const nvk::index_format::Header& before);
    int Split(int index, const void* key);
    bool FindChild(int index, void* key, std::uint32_t child, unsigned long level, int& slot);
    int InsSeparator(int index, void* leftKey, std::uint32_t left, void* separator,
                     std::uint32_t right, unsigned long level);
    bool SeekValue(int index, unsigned long value, int& slot);

    nvk::MappedFile* m_Map = nullptr;            // windows of a named file
    std::uint64_t m_FileAt = ~std::uint64_t{0};  // where the file stands; unknown
    std::uint32_t m_FilePages = 0;               // pages the file held when last asked
    std::uint64_t m_FileSize = 0;                // and its size
    std::uint32_t m_Walked = 0;                  // leaves left by Next and Prev since Position
    std::uint32_t m_Deletions = 0;               // entries removed by this object
    std::uint32_t m_DeletionsSeen = 0;           // the same, when the cursor last moved
};
