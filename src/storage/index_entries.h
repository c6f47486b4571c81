// The index descriptors and the entries of the page in m_Page. Inline, and
// included by every part of the index file: the walks and the page scans ask
// for them at every entry they pass.
#pragma once

#include "nvk/storage/index_file.h"
#include "storage/index_format.h"

inline nvk::index_format::Descriptor& EIndexFile::Desc(int index) const {
    return m_Header->Indexes[index];
}

inline char* EIndexFile::EntryAt(int index, int slot) const {
    return m_Page + nvk::index_format::kPageHeaderSize + slot * Desc(index).EntrySize;
}

inline std::uint32_t EIndexFile::ValueAt(int index, int slot) const {
    return nvk::index_format::Load32(EntryAt(index, slot) + Desc(index).KeySize);
}

inline bool EIndexFile::SoundPage(int index, unsigned long level) const {
    namespace fmt = nvk::index_format;
    return !fmt::IsFreePage(m_Page) && static_cast<unsigned long>(fmt::LevelOf(m_Page)) == level &&
           fmt::CountOf(m_Page) <= Desc(index).MaxEntries;
}

inline bool EIndexFile::SoundLeaf(int index) const {
    return SoundPage(index, 0);
}
