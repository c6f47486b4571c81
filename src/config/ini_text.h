// The text of an INI file, built piece by piece into one Chaine. Writers go
// through their pieces twice: once into a counter, then into a text given
// the room counted, so that a file of megabytes takes one block and no copy.
// A writer may count what is quicker to reach than what it writes (a
// section's lines by their dictionary, not their order): should the second
// pass add more, the room doubles as it grows, since appending to a Chaine
// grows a large text by fixed steps, which would copy it hundreds of times.
#pragma once


#include "core/copy_bytes.h"
#include "nvk/core/chaine.h"

namespace nvk {

class IniText {
public:
    // A counter of what is added, that keeps nothing.
    static IniText Counter() {
        IniText counter;
        counter.m_Counting = true;
        return counter;
    }
    // A text with room for `room` bytes.
    explicit IniText(int room = 0) {
        if (room > 0) {
            m_Room = room;
            m_Data = m_Text.SetLength(m_Room);
        }
    }

    void Add(const char* text, int n) {
        if (n <= 0) {
            return;
        }
        if (m_Counting) {
            m_Used += n;
            return;
        }
        if (m_Used + n > m_Room) {
            m_Room = m_Used + n < 128 ? 128 : 2 * (m_Used + n);
            m_Data = m_Text.SetLength(m_Room);
        }
        CopyBytes(m_Data + m_Used, text, static_cast<std::size_t>(n));
        m_Used += n;
    }
    void Add(const Chaine& text) { Add(text.c_str(), text.Length()); }
    void Add(char c) { Add(&c, 1); }
    void AddLine(const Chaine& text) {
        Add(text);
        Add("\r\n", 2);
    }

    int Used() const { return m_Used; }
    bool Counting() const { return m_Counting; }

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
    bool m_Counting = false;
};

}  // namespace nvk
