// The index file's reading side: descent, search in a page, navigation with
// the shared next position, ranks and prefixes.
#include <algorithm>
#include <cstring>
#include <vector>

#include "core/copy_bytes.h"
#include "nvk/storage/index_file.h"
#include "storage/index_entries.h"
#include "storage/index_format.h"
#include "storage/index_keys.h"

namespace fmt = nvk::index_format;

// Here, next to the scans that call it for every entry they pass.
long EIndexFile::CompareIndex(int index, const void* a, const void* b) {
    const fmt::Descriptor& d = m_Header->Indexes[index];
    if (d.KeyType == nvk::kKeyTypeDerived) {
        return CompareIndexUnknow(index, const_cast<void*>(a), const_cast<void*>(b), d.KeySize);
    }
    return nvk::CompareKeys(d.KeyType, d.KeySize, a, b);
}

// CompareIndex, with the commonest key types compared in line: a page scan
// compares its key with hundreds of entries, and the call and the choice by
// key type would cost more than the comparison itself. The scans are written
// once over the comparison Visit hands them, so the choice is made once a
// scan rather than once an entry.
class EIndexFile::KeyOrder {
public:
    KeyOrder(EIndexFile& file, int index) : m_File(file), m_Index(index) {
        const fmt::Descriptor& d = file.Desc(index);
        if ((d.KeyType == 20 || d.KeyType == 29) && d.KeySize >= 8) {
            m_Inline = Inline::Signed64;
        } else if (d.KeyType == 18 && d.KeySize >= 4) {
            m_Inline = Inline::Unsigned32;
        }
    }

    template <class Scan>
    auto Visit(Scan&& scan) const {
        switch (m_Inline) {
            case Inline::Signed64:
                return scan(Order<std::int64_t>{});
            case Inline::Unsigned32:
                return scan(Order<std::uint32_t>{});
            default:
                return scan([this](const void* a, const void* b) {
                    return m_File.CompareIndex(m_Index, a, b);
                });
        }
    }

    long operator()(const void* a, const void* b) const {
        return Visit([&](const auto& order) { return order(a, b); });
    }

private:
    enum class Inline { None, Signed64, Unsigned32 };

    template <class T>
    struct Order {
        long operator()(const void* a, const void* b) const {
            T x;
            T y;
            std::memcpy(&x, a, sizeof x);
            std::memcpy(&y, b, sizeof y);
            return x < y ? -1 : (y < x ? 1 : 0);
        }
    };

    EIndexFile& m_File;
    int m_Index;
    Inline m_Inline = Inline::None;
};

namespace {

// What Route answers besides an entry's offset.
constexpr int kStoppedOnEqual = -1;
constexpr int kBadPage = -2;

// The offset of the first of the entries equal to `key` that end at `at`.
template <class Order>
int FirstOfEqual(const Order& order, const void* key, const char* entries, int at, int entrySize) {
    while (at > 0 && order(key, entries + at - entrySize) == 0) {
        at -= entrySize;
    }
    return at;
}

// The offset of the entry of an interior page whose child `key` goes down
// to, the page scanned from both ends at once: entry 0 routes every key below
// entry 1. Among equal entries the first is taken when `firstOfEqual`.
template <class Order>
int Route(const Order& order, const void* key, const char* entries, int count, int entrySize,
          bool stopOnEqual, bool firstOfEqual) {
    if (count <= 1) {
        return 0;
    }
    int low = entrySize;
    int high = entrySize * (count - 1);
    for (;;) {
        long c = order(key, entries + low);
        if (c == 0 && stopOnEqual) {
            return kStoppedOnEqual;
        }
        if (c < 0) {
            return low - entrySize;
        }
        c = order(key, entries + high);
        if (c == 0 && stopOnEqual) {
            return kStoppedOnEqual;
        }
        if (c >= 0) {
            return c == 0 && firstOfEqual ? FirstOfEqual(order, key, entries, high, entrySize)
                                          : high;
        }
        low += entrySize;
        high -= entrySize;
        if (high < 0) {
            return kBadPage;
        }
    }
}

// The offset of the entry equal to `key` in a leaf, the first of equal ones
// where there may be several, scanned from both ends at once; -1 for none.
template <class Order>
int FindEqual(const Order& order, const void* key, const char* entries, int count, int entrySize,
              bool duplicates) {
    int low = 0;
    int high = entrySize * (count - 1);
    if (order(key, entries) == 0) {
        return 0;
    }
    for (;;) {
        if (order(key, entries + high) == 0) {
            return duplicates ? FirstOfEqual(order, key, entries, high, entrySize) : high;
        }
        low += entrySize;
        high -= entrySize;
        if (high < 0) {
            return -1;
        }
        if (order(key, entries + low) == 0) {
            return low;
        }
    }
}

// How many of a leaf's entries lie below `key`.
template <class Order>
int CountBelow(const Order& order, const void* key, const char* entries, int count, int entrySize) {
    int below = 0;
    for (const char* entry = entries; below < count && order(key, entry) > 0; entry += entrySize) {
        ++below;
    }
    return below;
}

}  // namespace

// One step along the chain of a level. A walk that takes more steps than the
// file has pages has met a cycle.
bool EIndexFile::StepAlong(int index, std::uint32_t page, unsigned long level,
                           std::uint32_t& steps) {
    if (++steps > m_FilePages + 1 || !GetPage(page) || !SoundPage(index, level)) {
        m_PageNo = 0;
        return false;
    }
    return true;
}

bool EIndexFile::StepToLeaf(int index, std::uint32_t page, std::uint32_t& steps) {
    return StepAlong(index, page, 0, steps);
}

bool EIndexFile::Searchable(int index) {
    Refresh();
    if (m_File == nullptr || index < 1 || index > m_Header->IndexCount) {
        return false;
    }
    m_Index = index - 1;
    return Desc(m_Index).KeyCount != 0 && Desc(m_Index).Root != 0;
}

// The pages above the wanted level are only read on the way down: they are
// searched in place in the file's mapping, and only the page the descent
// stops on is copied to m_Page.
int EIndexFile::CherchePage(int index, void* key, unsigned long level, int firstOfEqual,
                            int stopOnEqual) {
    const KeyOrder order(*this, index);
    const fmt::Descriptor& d = Desc(index);
    const int entrySize = d.EntrySize;
    const bool unique = d.Duplicates == 0;
    std::uint32_t pageNo = d.Root;
    const char* page = PeekPage(pageNo);
    if (page == nullptr) {
        return kDamaged;
    }
    // Every way out leaves the page the descent stands on in m_Page.
    const auto stop = [&](int result) { return HoldPage(pageNo, page) ? result : kDamaged; };
    unsigned long pageLevel = fmt::LevelOf(page);
    if (fmt::IsFreePage(page) || pageLevel < level) {
        return stop(kDamaged);
    }
    while (pageLevel > level) {
        const int count = fmt::CountOf(page);
        if (count == 0 || count > d.MaxEntries) {
            return stop(kDamaged);
        }
        const char* entries = page + fmt::kPageHeaderSize;
        const int child = order.Visit([&](const auto& compare) {
            return Route(compare, key, entries, count, entrySize, stopOnEqual && unique,
                         firstOfEqual && !unique);
        });
        if (child == kStoppedOnEqual) {
            return stop(kDuplicate);
        }
        if (child == kBadPage) {
            return stop(kDamaged);
        }
        const std::uint32_t childNo = fmt::Load32(entries + child + d.KeySize);
        const char* childPage = PeekPage(childNo);
        if (childPage == nullptr) {
            return stop(kDamaged);
        }
        pageNo = childNo;
        page = childPage;
        // Each step must go down by one level, so that no descent can loop.
        const unsigned long childLevel = fmt::LevelOf(page);
        if (fmt::IsFreePage(page) || childLevel + 1 != pageLevel || childLevel < level) {
            return stop(kDamaged);
        }
        pageLevel = childLevel;
    }
    if (!HoldPage(pageNo, page)) {
        return kDamaged;
    }
    if (fmt::CountOf(m_Page) > d.MaxEntries) {
        return kDamaged;
    }
    if (!firstOfEqual || unique) {
        return 0;
    }
    // Equal keys may begin in pages to the left of the one reached, on every
    // level: an entry among duplicates is searched for from the first of them.
    std::uint32_t steps = 0;
    while (fmt::CountOf(m_Page) > 0 && order(key, EntryAt(index, 0)) == 0 &&
           fmt::PrevOf(m_Page) != 0) {
        const std::uint32_t here = m_PageNo;
        if (!StepAlong(index, fmt::PrevOf(m_Page), level, steps)) {
            return kDamaged;
        }
        const int count = fmt::CountOf(m_Page);
        if (count == 0 || order(key, EntryAt(index, count - 1)) != 0) {
            return GetPage(here) ? 0 : kDamaged;
        }
        if (order(key, EntryAt(index, 0)) != 0) {
            return 0;
        }
    }
    return 0;
}

char* EIndexFile::GetPosPage(int index, void* key) {
    const int count = fmt::CountOf(m_Page);
    if (count == 0) {
        return nullptr;
    }
    char* entries = m_Page + fmt::kPageHeaderSize;
    const fmt::Descriptor& d = Desc(index);
    const int found = KeyOrder(*this, index).Visit([&](const auto& order) {
        return FindEqual(order, key, entries, count, d.EntrySize, d.Duplicates != 0);
    });
    return found < 0 ? nullptr : entries + found;
}

char* EIndexFile::GetPosInsPage(int index, void* key) {
    const KeyOrder order(*this, index);
    char* entries = m_Page + fmt::kPageHeaderSize;
    const int count = fmt::CountOf(m_Page);
    if (count == 0) {
        return entries;
    }
    const int entrySize = Desc(index).EntrySize;
    const bool unique = Desc(index).Duplicates == 0;
    char* const duplicate = reinterpret_cast<char*>(~std::uintptr_t{0});
    int low = 0;
    int high = entrySize * (count - 1);
    for (;;) {
        long c = order(key, entries + low);
        if (c < 0) {
            return entries + low;
        }
        if (c == 0 && unique) {
            return duplicate;
        }
        c = order(key, entries + high);
        if (c == 0 && unique) {
            return duplicate;
        }
        if (c >= 0) {
            return entries + high + entrySize;
        }
        low += entrySize;
        high -= entrySize;
        if (high < 0) {
            return nullptr;
        }
    }
}

unsigned long EIndexFile::Take(int slot) {
    const fmt::Descriptor& d = Desc(m_Index);
    const char* entry = EntryAt(m_Index, slot);
    if (m_KeyBuffer != nullptr) {
        // Every step of a walk copies its key: inline, as the short texts.
        nvk::CopyBytes(static_cast<char*>(m_KeyBuffer), entry, d.KeySize);
    }
    return fmt::Load32(entry + d.KeySize);
}

void EIndexFile::Position(int slot) {
    m_CurPage = m_NextPage = m_PageNo;
    m_CurSlot = m_NextSlot = slot;
    m_Walked = 0;
    m_DeletionsSeen = m_Deletions;
}

// A walk with Next or Prev that has left more leaves than the file has pages
// goes round a cycle in the chain, and ends.
bool EIndexFile::LeavePage() {
    return ++m_Walked <= m_FilePages + 1;
}

void EIndexFile::ClearNext() {
    m_NextPage = 0;
    m_NextSlot = 0;
    m_NextValue = 0;
}

void EIndexFile::NoteForward(int slot) {
    m_NextSlot = slot + 1;
    if (m_NextSlot < fmt::CountOf(m_Page)) {
        m_NextValue = ValueAt(m_Index, m_NextSlot);
        return;
    }
    const std::uint32_t next = fmt::NextOf(m_Page);
    if (next == 0 || !LeavePage() || !GetPage(next)) {
        ClearNext();
        return;
    }
    m_NextSlot = 0;
    m_NextPage = next;
    if (fmt::IsFreePage(m_Page)) {
        ClearNext();
        return;
    }
    m_NextValue = ValueAt(m_Index, 0);
}

void EIndexFile::NoteBackward(int slot) {
    if (slot > 0) {
        m_NextSlot = slot - 1;
        m_NextValue = ValueAt(m_Index, m_NextSlot);
        return;
    }
    const std::uint32_t prev = fmt::PrevOf(m_Page);
    if (prev == 0 || !LeavePage() || !GetPage(prev) || !SoundLeaf(m_Index) ||
        fmt::CountOf(m_Page) == 0) {
        ClearNext();
        return;
    }
    m_NextSlot = fmt::CountOf(m_Page) - 1;
    m_NextPage = prev;
    m_NextValue = ValueAt(m_Index, m_NextSlot);
}

unsigned long EIndexFile::Step(bool forward) {
    if (m_File == nullptr || m_NextPage == 0) {
        return 0;
    }
    // A step inside the page in the buffer reads no page; one that reads
    // another, now or to note the next position, looks for changes first.
    if (m_NextPage != m_PageNo || m_NextSlot <= 0 || m_NextSlot + 1 >= fmt::CountOf(m_Page)) {
        Refresh();
    }
    if (m_NextPage != m_PageNo && !GetPage(m_NextPage)) {
        m_PageNo = 0;
        return 0;
    }
    if (fmt::IsFreePage(m_Page) || !SoundLeaf(m_Index)) {
        return 0;
    }
    // The entry last delivered was deleted if its slot now holds the value
    // noted for the next one: the entries have moved down by one. Asked only
    // after a deletion, since two neighbours may hold equal values and the
    // walk would then stand still.
    const fmt::Descriptor& d = Desc(m_Index);
    if (m_Deletions != m_DeletionsSeen && m_CurPage == m_NextPage && m_CurSlot >= 0 &&
        m_CurSlot < d.MaxEntries && ValueAt(m_Index, m_CurSlot) == m_NextValue) {
        m_NextSlot = m_CurSlot;
    }
    m_DeletionsSeen = m_Deletions;
    if (m_NextSlot < 0 || m_NextSlot >= fmt::CountOf(m_Page)) {
        return 0;
    }
    m_CurPage = m_NextPage;
    m_CurSlot = m_NextSlot;
    const unsigned long value = Take(m_CurSlot);
    if (forward) {
        NoteForward(m_CurSlot);
    } else {
        NoteBackward(m_CurSlot);
    }
    return value;
}

unsigned long EIndexFile::Next() {
    return Step(true);
}

unsigned long EIndexFile::Prev() {
    return Step(false);
}

unsigned long EIndexFile::First(int index) {
    if (!Searchable(index) || !GetPage(Desc(m_Index).FirstLeaf) || !SoundLeaf(m_Index) ||
        fmt::CountOf(m_Page) == 0) {
        return 0;
    }
    Position(0);
    const unsigned long value = Take(0);
    NoteForward(0);
    return value;
}

unsigned long EIndexFile::Last(int index) {
    if (!Searchable(index) || !GetPage(Desc(m_Index).LastLeaf) || !SoundLeaf(m_Index) ||
        fmt::CountOf(m_Page) == 0) {
        return 0;
    }
    const int slot = fmt::CountOf(m_Page) - 1;
    Position(slot);
    const unsigned long value = Take(slot);
    NoteBackward(slot);
    return value;
}

unsigned long EIndexFile::Equal(int index, void* key) {
    if (key == nullptr || !Searchable(index) || CherchePage(m_Index, key, 0, 1, 0) != 0) {
        return 0;
    }
    const char* entry = GetPosPage(m_Index, key);
    if (entry == nullptr) {
        m_CurSlot = 0;
        return 0;
    }
    const int slot =
        static_cast<int>(entry - (m_Page + fmt::kPageHeaderSize)) / Desc(m_Index).EntrySize;
    Position(slot);
    const unsigned long value = Take(slot);
    NoteForward(slot);
    return value;
}

unsigned long EIndexFile::GreaterEqual(int index, void* key) {
    if (key == nullptr || !Searchable(index) || CherchePage(m_Index, key, 0, 1, 0) != 0) {
        return 0;
    }
    const KeyOrder order(*this, m_Index);
    const int entrySize = Desc(m_Index).EntrySize;
    int slot = 0;
    std::uint32_t steps = 0;
    for (;;) {
        const int count = fmt::CountOf(m_Page);
        const char* entries = EntryAt(m_Index, 0);
        slot = order.Visit([&](const auto& compare) {
            return CountBelow(compare, key, entries, count, entrySize);
        });
        if (slot < count) {
            break;
        }
        const std::uint32_t next = fmt::NextOf(m_Page);
        if (next == 0 || !StepToLeaf(m_Index, next, steps)) {
            m_CurSlot = 0;
            return 0;
        }
    }
    Position(slot);
    const unsigned long value = Take(slot);
    NoteForward(slot);
    return value;
}

// Among equal keys the last of the leaf is delivered. Leaves to the left are
// compared by their first entry only: a sound tree leaves the leaf it reached
// only from the leftmost one, which has none.
unsigned long EIndexFile::LessEqual(int index, void* key) {
    if (key == nullptr || !Searchable(index) || CherchePage(m_Index, key, 0, 0, 0) != 0) {
        return 0;
    }
    const KeyOrder order(*this, m_Index);
    int slot = fmt::CountOf(m_Page) - 1;
    std::uint32_t steps = 0;
    for (;;) {
        if (slot < 0) {
            const std::uint32_t prev = fmt::PrevOf(m_Page);
            if (prev == 0 || !StepToLeaf(m_Index, prev, steps)) {
                m_CurSlot = 0;
                return 0;
            }
            slot = fmt::CountOf(m_Page) > 0 ? 0 : -1;
            continue;
        }
        if (order(key, EntryAt(m_Index, slot)) >= 0) {
            break;
        }
        --slot;
    }
    Position(slot);
    const unsigned long value = Take(slot);
    NoteBackward(slot);
    return value;
}

// Walks from the nearer end of the leaf chain; the cursor stays where it was.
unsigned long EIndexFile::GetAt(int index, unsigned long rank) {
    if (!Searchable(index) || rank >= Desc(m_Index).KeyCount) {
        return 0;
    }
    const fmt::Descriptor& d = Desc(m_Index);
    const bool forward = rank < d.KeyCount / 2;
    unsigned long distance = forward ? rank : d.KeyCount - rank - 1;
    std::uint32_t page = forward ? d.FirstLeaf : d.LastLeaf;
    std::uint32_t steps = 0;
    for (;;) {
        if (page == 0 || !StepToLeaf(m_Index, page, steps)) {
            return 0;
        }
        const unsigned long count = fmt::CountOf(m_Page);
        if (distance < count) {
            return Take(static_cast<int>(forward ? distance : count - 1 - distance));
        }
        distance -= count;
        page = forward ? fmt::NextOf(m_Page) : fmt::PrevOf(m_Page);
    }
}

// Reaches the first entry not below a prefix. The prefix is compared as raw
// bytes, at most a key's worth: over `wholeKey`, the key's size with the
// prefix padded by zeros; otherwise the prefix's own length.
EIndexFile::Walk EIndexFile::WalkPrefix(int index, const void* prefix, unsigned long prefixSize,
                                        bool wholeKey, int& slot) {
    const fmt::Descriptor& d = Desc(index);
    const unsigned long used =
        std::min<unsigned long>(prefix != nullptr ? prefixSize : 0, d.KeySize);
    std::vector<char> workKey(d.KeySize + fmt::kPadding, 0);
    if (used != 0) {
        std::memcpy(workKey.data(), prefix, used);
    }
    if (CherchePage(index, workKey.data(), 0, 1, 0) != 0) {
        return Walk::NoPage;
    }
    const int compared = wholeKey ? d.KeySize : static_cast<int>(used);
    std::uint32_t steps = 0;
    slot = 0;
    for (;;) {
        if (slot >= fmt::CountOf(m_Page)) {
            const std::uint32_t next = fmt::NextOf(m_Page);
            if (next == 0 || !StepToLeaf(index, next, steps)) {
                return Walk::OffTheEnd;
            }
            slot = 0;
            continue;
        }
        m_CurSlot = slot;
        if (nvk::CompareBytes(workKey.data(), EntryAt(index, slot), compared) <= 0) {
            return Walk::Found;
        }
        ++slot;
    }
}

unsigned long EIndexFile::Nombre(int index, void* prefix, unsigned long prefixSize) {
    int slot = 0;
    if (!Searchable(index) || WalkPrefix(m_Index, prefix, prefixSize, true, slot) != Walk::Found) {
        return 0;
    }
    const int compared = static_cast<int>(
        std::min<unsigned long>(prefix != nullptr ? prefixSize : 0, Desc(m_Index).KeySize));
    unsigned long count = 0;
    std::uint32_t steps = 0;
    for (;;) {
        if (slot >= fmt::CountOf(m_Page)) {
            const std::uint32_t next = fmt::NextOf(m_Page);
            if (next == 0 || !StepToLeaf(m_Index, next, steps)) {
                return count;
            }
            slot = 0;
            continue;
        }
        if (nvk::CompareBytes(prefix, EntryAt(m_Index, slot), compared) != 0) {
            return count;
        }
        ++count;
        ++slot;
    }
}

unsigned long EIndexFile::GetAt(int index, unsigned long rank, void* prefix,
                                unsigned long prefixSize) {
    if (rank >= Nombre(index, prefix, prefixSize)) {
        return 0;
    }
    int slot = 0;
    const Walk walk = WalkPrefix(m_Index, prefix, prefixSize, false, slot);
    if (walk == Walk::NoPage) {
        const bool sound = m_PageNo != 0 && SoundLeaf(m_Index) && fmt::CountOf(m_Page) > 0;
        return sound ? Take(0) : 0;
    }
    if (walk == Walk::OffTheEnd) {
        return 0;
    }
    unsigned long distance = rank;
    std::uint32_t steps = 0;
    for (;;) {
        const unsigned long left = fmt::CountOf(m_Page) - slot;
        if (distance < left) {
            return Take(slot + static_cast<int>(distance));
        }
        distance -= left;
        const std::uint32_t next = fmt::NextOf(m_Page);
        if (next == 0 || !StepToLeaf(m_Index, next, steps)) {
            return 0;
        }
        slot = 0;
    }
}

long EIndexFile::GetFocus(int index, void* prefix, unsigned long prefixSize) {
    if (m_File == nullptr) {
        return -1;
    }
    Refresh();
    if (index < 1 || index > m_Header->IndexCount + 1) {
        return 0;
    }
    if (!Searchable(index) || prefix == nullptr || prefixSize == 0) {
        return -1;
    }
    int slot = 0;
    const Walk walk = WalkPrefix(m_Index, prefix, prefixSize, false, slot);
    if (walk == Walk::NoPage) {
        return -1;
    }
    if (walk == Walk::OffTheEnd) {
        return 0;
    }
    Take(0);
    long rank = slot;
    std::uint32_t steps = 0;
    for (std::uint32_t prev = fmt::PrevOf(m_Page); prev != 0; prev = fmt::PrevOf(m_Page)) {
        if (!StepToLeaf(m_Index, prev, steps)) {
            return -1;
        }
        rank += fmt::CountOf(m_Page);
    }
    return rank;
}
