// EIniFile: the sections, the parsing of a file's text and the text that
// Close writes back.
#include <vector>

#include "config/ini_text.h"
#include "nvk/config/ini_file.h"

namespace {

// The name between the first '[' and its matching ']', brackets nesting; empty
// when the bracket is never closed. What follows the closing bracket is ignored.
Chaine SectionName(const char* line, int length) {
    int depth = 0;
    for (int i = 0; i < length; ++i) {
        if (line[i] == '[') {
            ++depth;
        } else if (line[i] == ']' && --depth == 0) {
            return Chaine(line + 1, i - 1);
        }
    }
    return Chaine();
}

}  // namespace

EIniFile::SectionDesc& EIniFile::Section(const Chaine& name) {
    const int before = m_Sections.Count();
    SectionDesc& section = m_Sections[name];
    if (m_Sections.Count() != before) {
        m_SectionOrder.Add(name);
    }
    return section;
}

const EIniFile::SectionDesc& EIniFile::Section(const Chaine& name) const {
    const int index = m_Sections.Find(name);
    return index == -1 ? m_EmptySection : m_Sections.GetValue(index);
}

EIniFile::SectionDesc& EIniFile::operator[](unsigned int i) {
    const int index = static_cast<int>(i);
    if (index >= m_SectionOrder.Size()) {
        m_SectionOrder.SetSize(index + 1);
    }
    // Straight into the dictionary: the name already has its place.
    return m_Sections[m_SectionOrder[index]];
}

const EIniFile::SectionDesc& EIniFile::operator[](unsigned int i) const {
    if (i >= static_cast<unsigned int>(m_SectionOrder.Size())) {
        return m_EmptySection;
    }
    return Section(m_SectionOrder[static_cast<int>(i)]);
}

const Chaine EIniFile::GetSectionName(unsigned int i) const {
    if (i >= static_cast<unsigned int>(m_SectionOrder.Size())) {
        return Chaine();
    }
    return m_SectionOrder[static_cast<int>(i)];
}

void EIniFile::Reset() {
    m_Sections = FDictionnaryNoCase<SectionDesc>();
    m_SectionOrder = PTableau<Chaine>();
    m_Preamble.Empty();
}

void EIniFile::ReadInData(const Chaine& text) {
    if (m_Opened) {
        return;
    }
    m_Handle = nvk::os::INVALID_HANDLE_VALUE;
    m_Opened = true;
    m_Writable = false;
    Reset();
    m_Writable = true;

    const char* data = text.c_str();
    const int length = text.Length();
    const bool oneLine = text.FindChar('\n') == -1;
    Chaine currentName;
    // The section of currentName once a line has made it; sections keep
    // their address while others are added.
    SectionDesc* current = nullptr;
    int start = 0;
    while (start <= length) {
        const int feed = text.FindChar('\n', false, start);
        const int end = feed == -1 ? length : feed;
        int first = start;
        int last = end;
        if (!oneLine) {
            while (first < last && data[first] == '\r') {
                ++first;
            }
            while (last > first && data[last - 1] == '\r') {
                --last;
            }
        }
        // The line ends as it is written back: one carriage return, then its
        // feed. Carriage returns ahead of it are left out of the line's place.
        const bool asWritten = last + 1 == feed;
        start = end + 1;
        const char* line = data + first;
        const int size = last - first;
        if (size == 0) {
            continue;
        }
        if (line[0] == '[') {
            currentName = SectionName(line, size);
            current = nullptr;
            continue;
        }
        if (currentName.IsEmpty()) {
            m_Preamble += Chaine(line, size);
            m_Preamble += "\r\n";
            continue;
        }
        if (current == nullptr) {
            current = &Section(currentName);
        }
        current->ReadLine(text, first, size, asWritten);
    }
}

Chaine EIniFile::AsChaine() const {
    const auto write = [this](nvk::IniText& text) {
        text.Add(m_Preamble);
        // A section goes out once, at the first place the order names it; the
        // sections outside the order follow in the dictionary's order.
        std::vector<bool> written(static_cast<std::size_t>(m_Sections.Count()));
        for (int i = 0; i < m_SectionOrder.Size(); ++i) {
            const Chaine& name = m_SectionOrder[i];
            text.Add(i > 0 ? "\r\n[" : "[", i > 0 ? 3 : 1);
            text.Add(name);
            text.Add("]\r\n", 3);
            const int index = m_Sections.Find(name);
            if (index != -1 && !written[static_cast<std::size_t>(index)]) {
                written[static_cast<std::size_t>(index)] = true;
                m_Sections.GetValue(index).AppendTo(text);
            }
        }
        for (int index = 0; index < m_Sections.Count(); ++index) {
            if (!written[static_cast<std::size_t>(index)]) {
                text.Add("\r\n[", 3);
                text.Add(m_Sections.GetKey(index));
                text.Add("]\r\n", 3);
                m_Sections.GetValue(index).AppendTo(text);
            }
        }
    };
    nvk::IniText size = nvk::IniText::Counter();
    write(size);
    nvk::IniText text(size.Used());
    write(text);
    return text.Finish();
}

bool EIniFile::RemoveSection(const Chaine& section) {
    if (!m_Sections.Remove(section)) {
        return false;
    }
    for (int i = m_SectionOrder.Size() - 1; i >= 0; --i) {
        if (m_SectionOrder[i].EqualsNoCase(section)) {
            m_SectionOrder.Remove(1, i);
        }
    }
    return true;
}

bool EIniFile::ChangeSectionName(const Chaine& oldName, const Chaine& newName) {
    if (oldName.EqualsNoCase(newName)) {
        return true;
    }
    if (m_Sections.Exist(newName)) {
        return false;
    }
    // Out and in again rather than a rename in place, which could leave a key
    // above the last one out of order.
    const int index = m_Sections.Find(oldName);
    if (index != -1) {
        const SectionDesc moved = m_Sections.GetValue(index);
        m_Sections.Remove(oldName);
        m_Sections[newName] = moved;
    }
    for (int i = 0; i < m_SectionOrder.Size(); ++i) {
        if (m_SectionOrder[i].EqualsNoCase(oldName)) {
            m_SectionOrder[i] = newName;
            break;
        }
    }
    return true;
}
