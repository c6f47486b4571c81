#include "complete.h"

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace nvk::tool {

namespace {

// The options a usage line shows: "--type" in "--type T", "-o" in "-o FILE".
void AddOptions(std::string_view usage, std::vector<std::string>& words) {
    std::string text(usage);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '[' || c == ']' || c == '|'; }, ' ');
    std::istringstream tokens(text);
    for (std::string token; tokens >> token;) {
        if (token.size() > 1 && token[0] == '-') {
            words.push_back(token);
        }
    }
    words.emplace_back("--help");
}

const Area* FindArea(std::string_view name) {
    for (const Area& area : Areas()) {
        if (area.name == name) {
            return &area;
        }
    }
    return nullptr;
}

// What may stand after `before`, given that the word begins with `current`.
std::vector<std::string> Candidates(const Args& before, const std::string& current) {
    std::vector<std::string> words;
    if (before.empty()) {
        for (const Area& area : Areas()) {
            words.emplace_back(area.name);
        }
        words.insert(words.end(), {"demo", "--help", "--help-all", "--version", "--raw"});
        return words;
    }
    const Area* area = FindArea(before[0]);
    if (area == nullptr) {
        return words;
    }
    const bool commandArea = IsCommandArea(*area);
    if (before.size() == 1 && !commandArea) {
        for (const Command& command : area->commands) {
            words.emplace_back(command.name);
        }
        words.emplace_back("--help");
        return words;
    }
    // Past the command, files are the shell's own business, and options are
    // offered only to a word that begins like one.
    if (!current.starts_with('-')) {
        return words;
    }
    for (const Command& command : area->commands) {
        if (commandArea || command.name == before[1]) {
            AddOptions(command.usage, words);
        }
    }
    return words;
}

}  // namespace

int Complete(const Args& words) {
    Args before(words.begin(), words.empty() ? words.end() : words.end() - 1);
    const std::string current = words.empty() ? std::string() : words.back();
    if (!before.empty() && before[0] == "--raw") {
        before.erase(before.begin());
    }
    for (const std::string& word : Candidates(before, current)) {
        if (word.starts_with(current)) {
            std::cout << word << '\n';
        }
    }
    return kOk;
}

}  // namespace nvk::tool
