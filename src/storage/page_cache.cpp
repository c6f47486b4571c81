#include "storage/page_cache.h"

#include <algorithm>
#include <cstring>

namespace nvk {

namespace {

constexpr std::uint32_t kMaxSlots = 64;

}  // namespace

PageCache::PageCache(std::uint32_t pageSize, std::uint32_t budget) : m_PageSize(pageSize) {
    const std::uint32_t slots = std::min(pageSize != 0 ? budget / pageSize : 0, kMaxSlots);
    if (slots >= 2) {
        m_Pages.assign(slots, 0);
        m_Used.assign(slots, 0);
        m_Data.resize(std::size_t{slots} * pageSize);
    }
}

int PageCache::Find(std::uint32_t number) const {
    for (std::size_t slot = 0; slot < m_Pages.size(); ++slot) {
        if (m_Pages[slot] == number) {
            return static_cast<int>(slot);
        }
    }
    return -1;
}

bool PageCache::Get(std::uint32_t number, char* page) {
    const int slot = number != 0 ? Find(number) : -1;
    if (slot < 0) {
        return false;
    }
    m_Used[slot] = ++m_Clock;
    std::memcpy(page, m_Data.data() + std::size_t{m_PageSize} * slot, m_PageSize);
    return true;
}

// A page not held takes the slot used longest ago.
void PageCache::Put(std::uint32_t number, const char* page) {
    if (!Enabled() || number == 0) {
        return;
    }
    int slot = Find(number);
    if (slot < 0) {
        slot = static_cast<int>(std::min_element(m_Used.begin(), m_Used.end()) - m_Used.begin());
        m_Pages[slot] = number;
    }
    m_Used[slot] = ++m_Clock;
    std::memcpy(m_Data.data() + std::size_t{m_PageSize} * slot, page, m_PageSize);
}

void PageCache::Patch(std::uint32_t number, std::uint32_t offset, const void* bytes,
                      std::uint32_t size) {
    const int slot = number != 0 ? Find(number) : -1;
    if (slot >= 0 && offset + size <= m_PageSize) {
        std::memcpy(m_Data.data() + std::size_t{m_PageSize} * slot + offset, bytes, size);
    }
}

void PageCache::Clear() {
    std::fill(m_Pages.begin(), m_Pages.end(), 0);
    std::fill(m_Used.begin(), m_Used.end(), 0);
}

}  // namespace nvk
