// The index file's changing side: insertion with splits, deletion without
// merging, update of a key.
#include <cstring>
#include <vector>

#include "nvk/storage/index_file.h"
#include "storage/index_entries.h"
#include "storage/index_format.h"

namespace fmt = nvk::index_format;

namespace {

// A copy of a key or an entry that outlives the page buffer it came from,
// padded like a page so that comparisons stop inside it.
std::vector<char> CopyOf(const char* bytes, int size) {
    std::vector<char> copy(static_cast<std::size_t>(size) + fmt::kPadding, 0);
    std::memcpy(copy.data(), bytes, static_cast<std::size_t>(size));
    return copy;
}

}  // namespace

int EIndexFile::ChangeCheck(int index) {
    if (m_File == nullptr || m_Page == nullptr) {
        return kNoFile;
    }
    Refresh();
    // Only defined indexes change: the descriptor after the last one holds
    // no sizes an entry could be laid out by.
    if (index < 1 || index > m_Header->IndexCount) {
        return kBadIndex;
    }
    return kDone;
}

// The header goes to the file after every change that moved it, whatever
// the answer: a change refused or failed half way has still written pages,
// and the header on the file must describe them.
int EIndexFile::Finish(int result, const fmt::Header& before) {
    if (!m_InMemory && (result == kDone || std::memcmp(&before, m_Header, sizeof before) != 0)) {
        WriteHeader();
    }
    return result;
}

int EIndexFile::Insere(int index, void* key, unsigned long value) {
    const int check = ChangeCheck(index);
    if (check != kDone) {
        return check;
    }
    const fmt::Header before = *m_Header;
    return Finish(InsIndex(index - 1, key, value, 0), before);
}

int EIndexFile::Delete(int index, void* key, unsigned long value) {
    const int check = ChangeCheck(index);
    if (check != kDone) {
        return check;
    }
    const fmt::Header before = *m_Header;
    return Finish(DelIndex(index - 1, key, value, 0), before);
}

// There is no undo: if the new key can't go in, the old one stays deleted.
int EIndexFile::Update(int index, void* oldKey, void* newKey, unsigned long value) {
    const int check = ChangeCheck(index);
    if (check != kDone) {
        return check;
    }
    const fmt::Header before = *m_Header;
    int result = DelIndex(index - 1, oldKey, value, 0);
    if (result == kDone) {
        result = InsIndex(index - 1, newKey, value, 0);
    }
    return Finish(result, before);
}

// Reaches the entry of `level` whose child is `child`, as a deletion finds
// it: from the first of the entries equal to `key`, by page number.
bool EIndexFile::FindChild(int index, void* key, std::uint32_t child, unsigned long level,
                           int& slot) {
    if (CherchePage(index, key, level, 1, 0) != 0) {
        return false;
    }
    const char* entry = GetPosPage(index, key);
    if (entry == nullptr) {
        return false;
    }
    slot = static_cast<int>(entry - (m_Page + fmt::kPageHeaderSize)) / Desc(index).EntrySize;
    return SeekValue(index, child, slot);
}

// The entry of a new right half goes into the parent right after the entry
// of the page that split, not after every equal key: among duplicates the
// parent's equal keys route to pages further right, and the new page lies
// right after the one that split.
int EIndexFile::InsSeparator(int index, void* leftKey, std::uint32_t left, void* separator,
                             std::uint32_t right, unsigned long level) {
    int slot = 0;
    if (!FindChild(index, leftKey, left, level, slot)) {
        return kDamaged;
    }
    const fmt::Descriptor& d = Desc(index);
    if (fmt::CountOf(m_Page) == d.MaxEntries) {
        const int split = Split(index, separator);
        if (split != kDone) {
            return split;
        }
        if (!FindChild(index, leftKey, left, level, slot)) {
            return kDamaged;
        }
    }
    const int count = fmt::CountOf(m_Page);
    char* place = EntryAt(index, slot + 1);
    std::memmove(place + d.EntrySize, place,
                 static_cast<std::size_t>(count - 1 - slot) * d.EntrySize);
    std::memcpy(place, separator, d.KeySize);
    fmt::Store32(place + d.KeySize, right);
    fmt::SetCount(m_Page, count + 1);
    UpdatePage();
    return kDone;
}

// Splits the full page in m_Page into two halves, the upper half going to a
// new page on its right, and leaves in m_Page the half that `key` belongs in.
int EIndexFile::Split(int index, const void* key) {
    fmt::Descriptor& d = Desc(index);
    const int entrySize = d.EntrySize;
    const std::vector<char> work = CopyOf(m_Page, static_cast<int>(PageSize()));
    const fmt::PageHeader old = fmt::LoadPageHeader(work.data());
    const char* oldEntries = work.data() + fmt::kPageHeaderSize;
    const std::uint32_t left = m_PageNo;
    const int half = old.Count / 2;

    if (left == d.Root) {
        // The tree grows by a new root over the old one.
        const std::uint32_t root = static_cast<std::uint32_t>(NouvellePage());
        if (root == 0) {
            return kDamaged;
        }
        ++d.Height;
        d.Root = root;
        fmt::SetLevel(m_Page, d.Height);
        std::memcpy(m_Page + fmt::kPageHeaderSize, oldEntries, d.KeySize);
        fmt::Store32(m_Page + fmt::kPageHeaderSize + d.KeySize, left);
        fmt::SetCount(m_Page, 1);
        UpdatePage();
    }

    const std::uint32_t right = static_cast<std::uint32_t>(NouvellePage());
    if (right == 0) {
        return kDamaged;
    }
    fmt::StorePageHeader(
        m_Page, fmt::PageHeader{old.Level, static_cast<std::uint16_t>(half), left, old.NextPage});
    std::memcpy(m_Page + fmt::kPageHeaderSize, oldEntries + half * entrySize,
                static_cast<std::size_t>(half) * entrySize);
    UpdatePage();

    if (old.NextPage != 0) {
        if (!GetPage(old.NextPage)) {
            return kDamaged;
        }
        fmt::SetPrev(m_Page, right);
        UpdatePage();
    } else if (old.Level == 0) {
        d.LastLeaf = right;
    }

    Seek(left);
    std::memcpy(m_Page, work.data(), PageSize());
    std::memset(m_Page + fmt::kPageHeaderSize + half * entrySize, 0,
                static_cast<std::size_t>(half) * entrySize);
    fmt::SetCount(m_Page, half);
    fmt::SetNext(m_Page, right);
    UpdatePage();

    // The first key of the right half goes up as a copy and stays in it.
    std::vector<char> leftKey = CopyOf(oldEntries, d.KeySize);
    std::vector<char> separator = CopyOf(oldEntries + half * entrySize, d.KeySize);
    InsSeparator(index, leftKey.data(), left, separator.data(), right, old.Level + 1UL);
    const bool goesLeft = CompareIndex(index, key, separator.data()) < 0;
    return GetPage(goesLeft ? left : right) ? kDone : kDamaged;
}

int EIndexFile::InsIndex(int index, void* key, unsigned long value, unsigned long level) {
    fmt::Descriptor& d = Desc(index);
    if (d.Root != 0) {
        const int found = CherchePage(index, key, level, 0, 1);
        if (found != 0) {
            return found;
        }
    } else {
        // An empty index starts with one empty leaf.
        const std::uint32_t page = level == 0 ? static_cast<std::uint32_t>(NouvellePage()) : 0;
        if (page == 0) {
            return kDamaged;
        }
        d.Root = d.FirstLeaf = d.LastLeaf = page;
    }
    if (fmt::CountOf(m_Page) == d.MaxEntries) {
        // A refused key changes nothing: the duplicate is found before the
        // page splits.
        if (d.Duplicates == 0 && GetPosPage(index, key) != nullptr) {
            return kDuplicate;
        }
        const int split = Split(index, key);
        if (split != kDone) {
            return split;
        }
    }
    const int count = fmt::CountOf(m_Page);
    const int pageLevel = fmt::LevelOf(m_Page);
    const int entrySize = d.EntrySize;
    char* entries = m_Page + fmt::kPageHeaderSize;
    char* place = entries;
    if (count != 0) {
        place = GetPosInsPage(index, key);
        if (place == nullptr) {
            return kDamaged;
        }
        if (place == reinterpret_cast<char*>(~std::uintptr_t{0})) {
            return kDuplicate;
        }
        std::memmove(place + entrySize, place,
                     static_cast<std::size_t>(entries + count * entrySize - place));
    }
    std::memcpy(place, key, d.KeySize);
    fmt::Store32(place + d.KeySize, static_cast<std::uint32_t>(value));
    fmt::SetCount(m_Page, count + 1);
    UpdatePage();
    if (pageLevel == 0) {
        ++d.KeyCount;
    }
    // A new first key of a page below the root becomes the key of its entry
    // in the parent.
    if (count != 0 && place == entries && pageLevel < d.Height &&
        CompareIndex(index, entries, entries + entrySize) != 0) {
        std::vector<char> following = CopyOf(entries + entrySize, entrySize);
        std::vector<char> first = CopyOf(entries, entrySize);
        UpdIndex(index, following.data(), first.data(), m_PageNo, pageLevel + 1UL);
    }
    return kDone;
}

// Finds, from `slot` of the page in m_Page onward along its level, the entry
// whose value is `value`. The key is not tested again.
bool EIndexFile::SeekValue(int index, unsigned long value, int& slot) {
    const int level = fmt::LevelOf(m_Page);
    std::uint32_t steps = 0;
    for (;;) {
        for (; slot < fmt::CountOf(m_Page); ++slot) {
            if (ValueAt(index, slot) == static_cast<std::uint32_t>(value)) {
                return true;
            }
        }
        const std::uint32_t next = fmt::NextOf(m_Page);
        if (next == 0 || !StepAlong(index, next, level, steps)) {
            return false;
        }
        slot = 0;
    }
}

int EIndexFile::DelIndex(int index, void* key, unsigned long value, unsigned long level) {
    const int found = CherchePage(index, key, level, 1, 0);
    if (found != 0) {
        return found;
    }
    fmt::Descriptor& d = Desc(index);
    const char* entry = GetPosPage(index, key);
    if (entry == nullptr) {
        return kDamaged;
    }
    const int entrySize = d.EntrySize;
    char* entries = m_Page + fmt::kPageHeaderSize;
    int slot = static_cast<int>(entry - entries) / entrySize;
    if (d.Duplicates != 0 && !SeekValue(index, value, slot)) {
        return kDamaged;
    }

    const std::uint32_t page = m_PageNo;
    const int count = fmt::CountOf(m_Page);
    const int pageLevel = fmt::LevelOf(m_Page);
    if (slot < count - 1) {
        std::memmove(entries + slot * entrySize, entries + (slot + 1) * entrySize,
                     static_cast<std::size_t>(count - 1 - slot) * entrySize);
    } else {
        std::memset(entries + slot * entrySize, 0, entrySize);
    }
    const int remaining = count - 1;
    ++m_Deletions;
    fmt::SetCount(m_Page, remaining);
    UpdatePage();
    if (pageLevel == 0) {
        --d.KeyCount;
    }

    // The first entry of a page below the root left: the parent's entry for
    // the page goes too, or takes the new first key.
    if (slot == 0 && pageLevel < d.Height) {
        const bool same = CompareIndex(index, key, entries) == 0;
        if (remaining != 0 && same) {
            return kDone;
        }
        if (remaining == 0) {
            DelIndex(index, key, page, pageLevel + 1UL);
        } else {
            std::vector<char> first = CopyOf(entries, entrySize);
            UpdIndex(index, key, first.data(), page, pageLevel + 1UL);
        }
    }
    if (remaining != 0) {
        return kDone;
    }

    // The page is empty: off the chain of its level and onto the free list.
    if (!GetPage(page)) {
        return kDamaged;
    }
    const fmt::PageHeader gone = fmt::LoadPageHeader(m_Page);
    DelPage();
    if (gone.PrevPage != 0) {
        if (GetPage(gone.PrevPage)) {
            fmt::SetNext(m_Page, gone.NextPage);
            UpdatePage();
        }
    } else if (gone.Level == 0) {
        d.FirstLeaf = gone.NextPage;
    }
    if (gone.NextPage != 0) {
        if (GetPage(gone.NextPage)) {
            fmt::SetPrev(m_Page, gone.PrevPage);
            UpdatePage();
        }
    } else if (gone.Level == 0) {
        d.LastLeaf = gone.PrevPage;
    }
    if (d.KeyCount == 0) {
        d.Root = 0;
        d.Height = 0;
    }
    return kDone;
}

int EIndexFile::UpdIndex(int index, void* oldKey, void* newEntry, unsigned long value,
                         unsigned long level) {
    // Among duplicates the entry is looked for from the first of them, as
    // the walk for its value only goes forward.
    const int found = CherchePage(index, oldKey, level, Desc(index).Duplicates != 0, 0);
    if (found != 0) {
        return found;
    }
    const fmt::Descriptor& d = Desc(index);
    const char* entry = GetPosPage(index, oldKey);
    if (entry == nullptr) {
        return kDone;
    }
    char* entries = m_Page + fmt::kPageHeaderSize;
    int slot = static_cast<int>(entry - entries) / d.EntrySize;
    if (d.Duplicates != 0 && !SeekValue(index, value, slot)) {
        return kDamaged;
    }
    std::memcpy(entries + slot * d.EntrySize, newEntry, d.KeySize);
    UpdatePage();
    const int pageLevel = fmt::LevelOf(m_Page);
    if (slot == 0 && pageLevel < d.Height) {
        UpdIndex(index, oldKey, newEntry, m_PageNo, pageLevel + 1UL);
    }
    return kDone;
}
