// A few pages of an index file kept in memory, written through: every change
// of a page still goes to the file at once, and the copies here only spare
// the reads. The budget is fixed, whatever the size of the file.
#pragma once

#include <cstdint>
#include <vector>

namespace nvk {

class PageCache {
public:
    // As many pages of `pageSize` bytes as fit `budget` bytes, at most 64;
    // none if not even two fit.
    PageCache(std::uint32_t pageSize, std::uint32_t budget);

    bool Enabled() const { return !m_Pages.empty(); }
    // Copies a held page into `page`; false if it is not held.
    bool Get(std::uint32_t number, char* page);
    // Holds a copy of the page as it now stands on the file.
    void Put(std::uint32_t number, const char* page);
    // Changes held bytes of a page, as a partial write of the file did.
    void Patch(std::uint32_t number, std::uint32_t offset, const void* bytes, std::uint32_t size);
    void Clear();

private:
    int Find(std::uint32_t number) const;

    std::uint32_t m_PageSize;
    std::vector<std::uint32_t> m_Pages;  // page number per slot; 0 = empty
    std::vector<std::uint64_t> m_Used;   // last use per slot
    std::vector<char> m_Data;
    std::uint64_t m_Clock = 0;
};

}  // namespace nvk
