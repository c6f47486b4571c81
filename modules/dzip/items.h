// The files that a command names: its item list split, wildcards and folders
// expanded, the filters of the record applied, and each file's proposed name
// in the archive.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "job.h"

namespace zipengine {

struct Item {
    std::string source;  // Windows path, as the caller's item gave it
    std::string name;    // archive name, '/' between folders, Windows-1252
    bool folder = false;
    std::uint32_t dosDate = 0;
    std::uint32_t dosTime = 0;
    std::uint32_t attributes = 0;
};

// The words of an item list: separated by blanks, a word in double quotes
// may hold blanks.
std::vector<std::string> SplitItems(char const* list);

// DOS wildcards, without regard to case.
bool MatchesWildcard(std::string const& pattern, std::string const& name);

// The files and folders that the record's item list selects, in the order
// they are found; names not found are reported through the job.
std::vector<Item> SelectItems(Job& job);

}  // namespace zipengine
