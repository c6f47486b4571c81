// EIniFile::SectionDesc: the lines under one section header.
#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "config/ini_text.h"
#include "nvk/config/ini_file.h"

namespace {

std::uintptr_t Address(const Chaine& text) {
    return reinterpret_cast<std::uintptr_t>(text.c_str());
}

}  // namespace

EIniFile::SectionDesc::SectionDesc(const Chaine& /*name*/) {}

Chaine EIniFile::SectionDesc::operator[](const Chaine& name) const {
    const int index = m_NamedLines.Find(name);
    return index == -1 ? Chaine() : m_NamedLines.GetValue(index);
}

Chaine& EIniFile::SectionDesc::operator[](unsigned int i) {
    Forget();
    const int index = static_cast<int>(i);
    if (index >= m_UnNamedLines.Size()) {
        m_UnNamedLines.SetSize(index + 1);
    }
    return m_UnNamedLines[index];
}

Chaine EIniFile::SectionDesc::operator[](unsigned int i) const {
    return i < Unsigned(m_UnNamedLines.Size()) ? m_UnNamedLines[static_cast<int>(i)] : Chaine();
}

Chaine& EIniFile::SectionDesc::GetLine(unsigned int i) {
    Forget();
    const int index = static_cast<int>(i);
    if (index >= m_LineOrder.Size()) {
        m_LineOrder.SetSize(index + 1);
    }
    // Straight into the dictionary: the name already has its place.
    return m_NamedLines[m_LineOrder[index]];
}

const Chaine& EIniFile::SectionDesc::GetLine(unsigned int i) const {
    if (i >= Unsigned(m_LineOrder.Size())) {
        return m_Empty;
    }
    const int index = m_NamedLines.Find(m_LineOrder[static_cast<int>(i)]);
    return index == -1 ? m_Empty : m_NamedLines.GetValue(index);
}

Chaine EIniFile::SectionDesc::GetLineName(unsigned int i) {
    return i < Unsigned(m_LineOrder.Size()) ? m_LineOrder[static_cast<int>(i)] : Chaine();
}

Chaine& EIniFile::SectionDesc::NamedLine(const Chaine& name) {
    Forget();
    const int before = m_NamedLines.Count();
    Chaine& value = m_NamedLines[name];
    if (m_NamedLines.Count() != before) {
        m_LineOrder.Add(name);
    }
    return value;
}

void EIniFile::SectionDesc::AddLine(const Chaine& line) {
    Forget();
    AddLine(line.c_str(), line.Length());
}

bool EIniFile::SectionDesc::AddLine(const char* text, int length) {
    if (length > 0 && text[0] == ';' && m_NamedLines.Count() == 0 && m_UnNamedLines.IsEmpty()) {
        m_Comments.Add(Chaine(text + 1, length - 1));
        return true;
    }
    int start = 0;
    while (start < length && text[start] == ' ') {
        ++start;
    }
    // A comment among the data lines is not kept.
    if (start < length && text[start] == ';') {
        return false;
    }
    int split = start;
    while (split < length && text[split] != '=') {
        ++split;
    }
    if (split == length) {
        m_UnNamedLines.Add(Chaine(text + start, length - start));
        return start == 0;
    }
    // Unnamed lines are written behind the named ones, and a name that comes
    // again stays at its first place.
    const bool inPlace = start == 0 && m_UnNamedLines.IsEmpty();
    const Chaine name(text + start, split - start);
    const int before = m_NamedLines.Count();
    m_NamedLines[name] = Chaine(text + split + 1, length - split - 1);
    if (m_NamedLines.Count() == before) {
        return false;
    }
    m_LineOrder.Add(name);
    return inPlace;
}

void EIniFile::SectionDesc::ReadLine(const Chaine& file, int first, int size, bool asWritten) {
    const bool kept = AddLine(file.c_str() + first, size) && asWritten;
    if (m_KeptLength < 0) {
        return;
    }
    if (!kept || (m_KeptLength > 0 && first != m_KeptStart + m_KeptLength)) {
        Forget();
        return;
    }
    if (m_KeptLength == 0) {
        m_File = file;
        m_KeptStart = first;
    }
    m_KeptLength = first + size + 2 - m_KeptStart;
}

void EIniFile::SectionDesc::Forget() {
    if (m_KeptLength > 0) {
        m_File.Empty();
    }
    m_KeptLength = -1;
}

bool EIniFile::SectionDesc::RemoveLine(const Chaine& name) {
    const int index = m_NamedLines.Find(name);
    if (index == -1) {
        return false;
    }
    Forget();
    m_NamedLines.Remove(name);
    for (int i = 0; i < m_LineOrder.Size(); ++i) {
        if (m_LineOrder[i].EqualsNoCase(name)) {
            m_LineOrder.Remove(1, i);
            break;
        }
    }
    return true;
}

void EIniFile::SectionDesc::Clean() {
    Forget();
    m_Comments.RemoveAll();
    m_NamedLines.RemoveAll();
    m_LineOrder.RemoveAll();
    m_UnNamedLines.RemoveAll();
}

Chaine EIniFile::SectionDesc::AsChaine() {
    nvk::IniText text;
    AppendTo(text);
    return text.Finish();
}

void EIniFile::SectionDesc::AppendTo(nvk::IniText& text) const {
    if (m_KeptLength > 0) {
        text.Add(m_File.c_str() + m_KeptStart, m_KeptLength);
        return;
    }
    for (int i = 0; i < m_Comments.Size(); ++i) {
        text.Add(';');
        text.AddLine(m_Comments[i]);
    }
    if (text.Counting()) {
        // The dictionary holds the lines the order names, and is read without
        // a search per line.
        for (int i = 0; i < m_NamedLines.Count(); ++i) {
            text.Add(m_NamedLines.GetKey(i));
            text.Add('=');
            text.AddLine(m_NamedLines.GetValue(i));
        }
    } else {
        // The lines go out in the file's order. A search of the dictionary
        // per line would compare names without case, each behind a pointer;
        // but a name of the order shares its text with its key, so the value
        // is found by that text's address. A name that shares nothing is
        // searched for as GetLine does.
        std::vector<std::pair<std::uintptr_t, int>> keys(
            static_cast<std::size_t>(m_NamedLines.Count()));
        for (int i = 0; i < m_NamedLines.Count(); ++i) {
            keys[static_cast<std::size_t>(i)] = {Address(m_NamedLines.GetKey(i)), i};
        }
        std::sort(keys.begin(), keys.end());
        for (int i = 0; i < m_LineOrder.Size(); ++i) {
            const Chaine& name = m_LineOrder[i];
            const auto key = std::lower_bound(keys.begin(), keys.end(),
                                              std::pair<std::uintptr_t, int>{Address(name), 0});
            text.Add(name);
            text.Add('=');
            text.AddLine(key != keys.end() && key->first == Address(name)
                             ? m_NamedLines.GetValue(key->second)
                             : GetLine(static_cast<unsigned int>(i)));
        }
    }
    for (int i = 0; i < m_UnNamedLines.Size(); ++i) {
        text.AddLine(m_UnNamedLines[i]);
    }
}
