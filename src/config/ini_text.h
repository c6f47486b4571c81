// The text of an INI file, built piece by piece into one Chaine. Its room
// doubles as it grows: appending to a Chaine grows a large text by fixed
// steps, which would copy a file of megabytes hundreds of times.
#pragma once

#include <cstring>

#include "nvk/core/chaine.h"

namespace nvk {

class IniText {
public:
    void Add(const char* text, int n) {
        if (n <= 0) {
            return;
        }
        if (m_Used + n > m_Room) {
            m_Room = m_Used + n < 128 ? 128 : 2 * (m_Used + n);
            m_Data = m_Text.SetLength(m_Room);
        }
        std::memcpy(m_Data + m_Used, text, static_cast<std::size_t>(n));
        m_Used += n;
    }
    void Add(const Chaine& text) { Add(text.c_str(), text.Length()); }
    void Add(char c) { Add(&c, 1); }
    void AddLine(const Chaine& text) {
        Add(text);
        Add("\r\n", 2);
    }

    // The text, cut to what was added.
    Chaine Finish() {
        m_Text.SetLength(m_Used);
        return m_Text;
    }

private:
    Chaine m_Text;
    char* m_Data = nullptr;
    int m_Used = 0;
    int m_Room = 0;
};

}  // namespace nvk
