// The texts and peers the text and INI benchmarks share with the instruction
// counting workload, so that both measure the same work.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace nvk::bench {

// Fields of words separated by ';', "key" near the end.
inline std::string Record(int length) {
    std::string text;
    for (int i = 0; static_cast<int>(text.size()) < length; ++i) {
        text += "field" + std::to_string(i) + ";ab;";
    }
    text.resize(static_cast<std::size_t>(length));
    text.replace(text.size() - 8, 3, "key");
    return text;
}

// Every "ab" of `text` replaced by "xyz", as std::string does it.
inline std::string ReplaceAll(const std::string& text) {
    std::string result;
    std::size_t last = 0;
    for (std::size_t hit; (hit = text.find("ab", last)) != std::string::npos; last = hit + 2) {
        result.append(text, last, hit - last);
        result += "xyz";
    }
    result.append(text, last);
    return result;
}

// The fields of `text` between its ';', into a vector that keeps its room.
inline void SplitFields(const std::string& text, std::vector<std::string>& fields) {
    fields.clear();
    std::size_t start = 0;
    for (std::size_t hit; (hit = text.find(';', start)) != std::string::npos; start = hit + 1) {
        fields.emplace_back(text, start, hit - start);
    }
    fields.emplace_back(text, start);
}

// Sections of a comment and 40 named lines, up to `size` bytes.
inline std::string IniSample(std::size_t size) {
    std::string out;
    out.reserve(size + 4096);
    char line[128];
    for (int section = 0; out.size() < size; ++section) {
        std::snprintf(line, sizeof line, "[Section%05d]\r\n; settings of group %d\r\n", section,
                      section % 97);
        out += line;
        for (int key = 0; key < 40; ++key) {
            std::snprintf(line, sizeof line, "Key%02d=Value %d.%d, with some words\r\n", key,
                          section, key);
            out += line;
        }
        out += "\r\n";
    }
    return out;
}

// What an INI parser reports, kept as EIniFile keeps it: values by name, and
// the order of sections and names. Handle is an inih handler.
struct IniSections {
    struct Section {
        std::map<std::string, std::string> values;
        std::vector<std::string> order;
    };
    std::map<std::string, Section> byName;
    std::vector<std::string> order;
    Section* last = nullptr;
    std::string lastName;

    static int Handle(void* user, const char* section, const char* name, const char* value) {
        auto* self = static_cast<IniSections*>(user);
        if (self->last == nullptr || self->lastName != section) {
            auto [it, added] = self->byName.try_emplace(section);
            if (added) {
                self->order.emplace_back(section);
            }
            self->last = &it->second;
            self->lastName = section;
        }
        auto [it, added] = self->last->values.insert_or_assign(name, value);
        if (added) {
            self->last->order.emplace_back(name);
        }
        return 1;
    }

    std::string Text() const {
        std::string out;
        for (std::size_t i = 0; i < order.size(); ++i) {
            out += i == 0 ? "[" : "\r\n[";
            out += order[i];
            out += "]\r\n";
            const Section& section = byName.at(order[i]);
            for (const std::string& name : section.order) {
                out += name;
                out += '=';
                out += section.values.at(name);
                out += "\r\n";
            }
        }
        return out;
    }
};

}  // namespace nvk::bench
