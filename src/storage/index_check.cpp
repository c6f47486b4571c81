#include "storage/index_check.h"

#include <cstdint>
#include <string>
#include <vector>

#include "nvk/storage/base_file.h"
#include "storage/index_format.h"
#include "storage/index_keys.h"

namespace nvk {

namespace fmt = index_format;

namespace {

class Checker {
public:
    explicit Checker(EBaseFile& file) : m_File(file) {}

    std::string Run() {
        const std::uint64_t size = m_File.Taille();
        if (size < fmt::kHeaderSize || !Read(0, &m_Header, fmt::kHeaderSize)) {
            return "the file is shorter than its header";
        }
        if (m_Header.Magic != fmt::kMagic) {
            return "bad magic number";
        }
        const std::uint32_t pageSize = m_Header.PageSize;
        if (pageSize < fmt::kPageHeaderSize || pageSize > fmt::kMaxPageSize ||
            (size - fmt::kHeaderSize) % pageSize != 0) {
            return "the file is not a whole number of pages of " + std::to_string(pageSize);
        }
        m_Pages = static_cast<std::uint32_t>((size - fmt::kHeaderSize) / pageSize);
        if (m_Header.IndexCount > fmt::kMaxIndexes) {
            return "IndexCount " + std::to_string(m_Header.IndexCount) + " above 16";
        }
        m_Owner.assign(m_Pages + 1, 0);
        m_Page.assign(pageSize + fmt::kPadding, 0);
        for (int i = 0; i < m_Header.IndexCount; ++i) {
            std::string error = CheckIndex(i);
            if (!error.empty()) {
                return "index " + std::to_string(i + 1) + ": " + error;
            }
        }
        return CheckFreeList();
    }

private:
    bool Read(std::uint64_t offset, void* buffer, std::uint32_t size) {
        return m_File.Seek(static_cast<long>(offset), 0) == offset &&
               m_File.Read(buffer, size) == 1;
    }

    bool Load(std::uint32_t page) {
        return page >= 1 && page <= m_Pages &&
               Read(fmt::kHeaderSize + std::uint64_t{page - 1} * m_Header.PageSize, m_Page.data(),
                    m_Header.PageSize);
    }

    long Compare(const fmt::Descriptor& d, const char* a, const char* b) const {
        if (d.KeyType == kKeyTypeDerived) {
            return CompareBytes(a, b, d.KeySize);
        }
        return CompareKeys(d.KeyType, d.KeySize, a, b);
    }

    static std::string At(std::uint32_t page) { return "page " + std::to_string(page) + ": "; }

    std::string CheckIndex(int i) {
        const fmt::Descriptor& d = m_Header.Indexes[i];
        if (d.KeySize > 251 || d.EntrySize != d.KeySize + 4 || d.MaxEntries < 2 ||
            d.MaxEntries % 2 != 0 ||
            d.MaxEntries > fmt::MaxEntries(m_Header.PageSize, d.EntrySize)) {
            return "bad descriptor";
        }
        if (d.Root == 0) {
            if (d.KeyCount != 0 || d.Height != 0) {
                return "no root, but KeyCount " + std::to_string(d.KeyCount);
            }
            return {};
        }
        const int entrySize = d.EntrySize;
        // One level at a time, from the root down: the pages of a level in
        // order, each with the key its parent routes by.
        struct Link {
            std::uint32_t page;
            std::vector<char> key;  // empty for the root
        };
        std::vector<Link> level{{d.Root, {}}};
        std::uint64_t keys = 0;
        for (int depth = d.Height; depth >= 0; --depth) {
            std::vector<Link> below;
            std::vector<char> last;
            for (std::size_t k = 0; k < level.size(); ++k) {
                const std::uint32_t page = level[k].page;
                if (page == 0 || page > m_Pages || !Load(page)) {
                    return At(page) + "past the end of the file";
                }
                if (m_Owner[page] != 0) {
                    return At(page) + "reached twice";
                }
                m_Owner[page] = i + 1;
                const fmt::PageHeader h = fmt::LoadPageHeader(m_Page.data());
                if (fmt::IsFreePage(m_Page.data())) {
                    return At(page) + "on the free list but in the tree";
                }
                if (h.Level != depth) {
                    return At(page) + "Level " + std::to_string(h.Level) + ", expected " +
                           std::to_string(depth);
                }
                if (h.Count == 0 || h.Count > d.MaxEntries) {
                    return At(page) + "Count " + std::to_string(h.Count);
                }
                const std::uint32_t prev = k == 0 ? 0 : level[k - 1].page;
                const std::uint32_t next = k + 1 == level.size() ? 0 : level[k + 1].page;
                if (h.PrevPage != prev || h.NextPage != next) {
                    return At(page) + "links " + std::to_string(h.PrevPage) + "/" +
                           std::to_string(h.NextPage) + ", expected " + std::to_string(prev) + "/" +
                           std::to_string(next);
                }
                const char* entries = m_Page.data() + fmt::kPageHeaderSize;
                if (!level[k].key.empty() && Compare(d, level[k].key.data(), entries) != 0) {
                    return At(page) + "first key differs from its parent's entry";
                }
                for (int slot = 0; slot < h.Count; ++slot) {
                    const char* entry = entries + slot * entrySize;
                    if (!last.empty()) {
                        const long order = Compare(d, last.data(), entry);
                        if (order > 0 || (order == 0 && d.Duplicates == 0)) {
                            return At(page) + "keys out of order at slot " + std::to_string(slot);
                        }
                    }
                    last.assign(entry, entry + d.KeySize);
                    last.resize(d.KeySize + fmt::kPadding, 0);
                    if (depth > 0) {
                        std::vector<char> key(entry, entry + d.KeySize);
                        key.resize(d.KeySize + fmt::kPadding, 0);
                        below.push_back({fmt::Load32(entry + d.KeySize), std::move(key)});
                    }
                }
                if (depth == 0) {
                    keys += h.Count;
                }
            }
            if (depth == 0 &&
                (d.FirstLeaf != level.front().page || d.LastLeaf != level.back().page)) {
                return "FirstLeaf/LastLeaf " + std::to_string(d.FirstLeaf) + "/" +
                       std::to_string(d.LastLeaf) + ", expected " +
                       std::to_string(level.front().page) + "/" + std::to_string(level.back().page);
            }
            level = std::move(below);
        }
        if (keys != d.KeyCount) {
            return "KeyCount " + std::to_string(d.KeyCount) + ", leaves hold " +
                   std::to_string(keys);
        }
        return {};
    }

    std::string CheckFreeList() {
        std::uint32_t free = 0;
        for (std::uint32_t page = m_Header.FreePage; page != 0;) {
            if (page > m_Pages || !Load(page)) {
                return "free list: page " + std::to_string(page) + " past the end of the file";
            }
            if (m_Owner[page] != 0) {
                return "free list: page " + std::to_string(page) +
                       (m_Owner[page] == kFree ? " reached twice" : " is in an index");
            }
            if (!fmt::IsFreePage(m_Page.data())) {
                return "free list: page " + std::to_string(page) + " is not marked free";
            }
            m_Owner[page] = kFree;
            ++free;
            page = fmt::Load32(m_Page.data() + 4);
        }
        for (std::uint32_t page = 1; page <= m_Pages; ++page) {
            if (m_Owner[page] == 0) {
                return "page " + std::to_string(page) + " is neither in an index nor free";
            }
        }
        if (m_Header.PageCount != m_Pages - free) {
            return "PageCount " + std::to_string(m_Header.PageCount) + ", pages in use " +
                   std::to_string(m_Pages - free);
        }
        return {};
    }

    static constexpr int kFree = 0xFF;

    EBaseFile& m_File;
    fmt::Header m_Header{};
    std::uint32_t m_Pages = 0;
    std::vector<int> m_Owner;  // per page: index number, kFree, or 0
    std::vector<char> m_Page;
};

}  // namespace

std::string CheckIndexFile(EBaseFile& file) {
    // The file may be shared with an open index: it is left where it stood.
    const unsigned long position = file.Seek(0, 1);
    std::string result = Checker(file).Run();
    file.Seek(static_cast<long>(position), 0);
    return result;
}

}  // namespace nvk
