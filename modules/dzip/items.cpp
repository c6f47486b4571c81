#include "items.h"

#include <ctime>

#include "os/api/file_attributes.h"
#include "os/api/find.h"

namespace zipengine {

using namespace nvk::os;

namespace {

constexpr char kNotMatched[] = "name not matched:";

bool HasWildcard(std::string const& text) {
    return text.find_first_of("*?") != std::string::npos;
}

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// A path that begins with one '/' is the system's own, where '\\' is part of
// a name; every other path takes either separator.
char SeparatorOf(std::string const& path) {
    return path.starts_with('/') && !path.starts_with("//") ? '/' : '\\';
}

std::string FolderOf(std::string const& path) {
    std::size_t slash = path.find_last_of("\\/");
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string BaseName(std::string const& name) {
    std::size_t slash = name.find_last_of('/');
    return slash == std::string::npos ? name : name.substr(slash + 1);
}

// The name an entry gets from its path: no drive, share or leading
// separator, no "." or ".." that would climb out of the extraction folder.
std::string ArchiveName(std::string const& source, bool junkFolders) {
    std::string path = source;
    for (char& c : path) {
        c = c == '\\' ? '/' : c;
    }
    std::size_t start = 0;
    if (path.size() >= 2 && path[1] == ':') {
        start = 2;
    } else if (path.starts_with("//")) {
        // \\server\share\ goes with the drive.
        std::size_t server = path.find('/', 2);
        std::size_t share = server == std::string::npos ? server : path.find('/', server + 1);
        start = share == std::string::npos ? path.size() : share;
    }
    std::string name;
    std::size_t at = start;
    while (at <= path.size()) {
        std::size_t end = path.find('/', at);
        if (end == std::string::npos) {
            end = path.size();
        }
        std::string part = path.substr(at, end - at);
        if (!part.empty() && part != "." && part != "..") {
            name += (name.empty() ? "" : "/") + part;
        }
        at = end + 1;
    }
    return junkFolders ? BaseName(name) : name;
}

void DosStamp(FILETIME const& written, Item& item) {
    std::uint64_t ticks = (std::uint64_t{written.dwHighDateTime} << 32) | written.dwLowDateTime;
    std::time_t seconds = static_cast<std::time_t>(ticks / 10000000 - 11644473600ULL);
    std::tm local{};
    localtime_r(&seconds, &local);
    int year = local.tm_year + 1900 < 1980 ? 1980 : local.tm_year + 1900;
    item.dosDate = static_cast<std::uint32_t>(((year - 1980) << 9) | ((local.tm_mon + 1) << 5) |
                                              local.tm_mday);
    item.dosTime = static_cast<std::uint32_t>((local.tm_hour << 11) | (local.tm_min << 5) |
                                              (local.tm_sec / 2));
}

// "mmddyy" or "mmddyyyy", as the date flag takes it; 0 when it isn't one.
std::uint32_t DosDateOf(char const* text) {
    std::string date = text == nullptr ? "" : text;
    if ((date.size() != 6 && date.size() != 8) ||
        date.find_first_not_of("0123456789") != std::string::npos) {
        return 0;
    }
    int month = std::stoi(date.substr(0, 2));
    int day = std::stoi(date.substr(2, 2));
    int year = std::stoi(date.substr(4));
    if (date.size() == 6) {
        year += year < 80 ? 2000 : 1900;
    }
    if (month < 1 || month > 12 || day < 1 || day > 31 || year < 1980) {
        return 0;
    }
    return static_cast<std::uint32_t>(((year - 1980) << 9) | (month << 5) | day);
}

bool MatchesAny(std::vector<std::string> const& patterns, std::string const& name) {
    for (std::string const& pattern : patterns) {
        if (MatchesWildcard(pattern, name) || MatchesWildcard(pattern, BaseName(name))) {
            return true;
        }
    }
    return false;
}

class Selector {
public:
    explicit Selector(Job& job) : m_job(job), m_command(job.Command()) {
        if (m_command.includeOnlyFollowingFlag != 0) {
            m_include = SplitItems(m_command.lpszIncludeFollowing);
        }
        if (m_command.excludeFollowingFlag != 0) {
            m_exclude = SplitItems(m_command.lpszExludeFollowing);
        }
        if (m_command.afterDateFlag != 0) {
            m_after = DosDateOf(m_command.lpszDate);
            if (m_after == 0) {
                job.Warn(148, "invalid date",
                         m_command.lpszDate == nullptr ? "" : m_command.lpszDate);
                job.Fail(ZE_PARMS);
            }
        }
    }

    void Select(std::string const& item) {
        bool recurse = m_command.recurseFlag != 0;
        if (!HasWildcard(item)) {
            DWORD attributes = GetFileAttributesA(item.c_str());
            if (attributes == INVALID_FILE_ATTRIBUTES) {
                m_job.Warn(132, kNotMatched, item);
                return;
            }
            WIN32_FIND_DATAA data{};
            HANDLE find = FindFirstFileA(item.c_str(), &data);
            if (find != INVALID_HANDLE_VALUE) {
                FindClose(find);
            }
            Add(item, data, attributes);
            if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && recurse) {
                char separator = SeparatorOf(item);
                Walk(item.ends_with(separator) ? item : item + separator, "*.*");
            }
            return;
        }
        std::size_t before = m_items.size();
        std::string folder = FolderOf(item);
        std::string pattern = item.substr(folder.size());
        if (recurse) {
            Walk(folder, pattern);
        } else {
            Search(folder, pattern, false);
        }
        if (m_items.size() == before) {
            m_job.Warn(132, kNotMatched, item);
        }
    }

    std::vector<Item> Take() { return std::move(m_items); }

private:
    bool Hidden(WIN32_FIND_DATAA const& data) const {
        return m_command.includeSysHiddenFlag == 0 &&
               (data.dwFileAttributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)) != 0;
    }

    // Files of `folder` that match `pattern`, then, when walking, every
    // sub-folder with the same pattern. Linked folders are not entered.
    void Walk(std::string const& folder, std::string const& pattern) {
        Search(folder, pattern, true);
        WIN32_FIND_DATAA data{};
        HANDLE find = FindFirstFileA((folder + "*.*").c_str(), &data);
        if (find == INVALID_HANDLE_VALUE) {
            return;
        }
        do {
            std::string name = data.cFileName;
            if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 || name == "." ||
                name == ".." || Hidden(data) ||
                (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
                continue;
            }
            Add(folder + name, data, data.dwFileAttributes);
            Walk(folder + name + SeparatorOf(folder), pattern);
        } while (FindNextFileA(find, &data));
        FindClose(find);
    }

    void Search(std::string const& folder, std::string const& pattern, bool filesOnly) {
        WIN32_FIND_DATAA data{};
        HANDLE find = FindFirstFileA((folder + pattern).c_str(), &data);
        if (find == INVALID_HANDLE_VALUE) {
            return;
        }
        do {
            std::string name = data.cFileName;
            bool isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (name == "." || name == ".." || Hidden(data) || (filesOnly && isFolder)) {
                continue;
            }
            Add(folder + name, data, data.dwFileAttributes);
        } while (FindNextFileA(find, &data));
        FindClose(find);
    }

    void Add(std::string const& source, WIN32_FIND_DATAA const& data, DWORD attributes) {
        Item item;
        item.source = source;
        item.folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        item.attributes = attributes;
        item.name = ArchiveName(source, m_command.noDirectoryNamesFlag != 0);
        DosStamp(data.ftLastWriteTime, item);
        if (item.name.empty() || (item.folder && (m_command.noDirectoryEntriesFlag != 0 ||
                                                  m_command.noDirectoryNamesFlag != 0))) {
            return;
        }
        if (!m_include.empty() && !item.folder && !MatchesAny(m_include, item.name)) {
            return;
        }
        if (MatchesAny(m_exclude, item.name) || (m_after != 0 && item.dosDate < m_after)) {
            return;
        }
        m_items.push_back(std::move(item));
    }

    Job& m_job;
    ZIPCMDSTRUCT& m_command;
    std::vector<std::string> m_include;
    std::vector<std::string> m_exclude;
    std::uint32_t m_after = 0;
    std::vector<Item> m_items;
};

}  // namespace

std::vector<std::string> SplitItems(char const* list) {
    std::vector<std::string> words;
    std::string text = list == nullptr ? "" : list;
    std::size_t at = 0;
    while (at < text.size()) {
        if (text[at] == ' ' || text[at] == '\t') {
            ++at;
            continue;
        }
        std::string word;
        if (text[at] == '"') {
            std::size_t end = text.find('"', at + 1);
            end = end == std::string::npos ? text.size() : end;
            word = text.substr(at + 1, end - at - 1);
            at = end + 1;
        } else {
            std::size_t end = text.find_first_of(" \t", at);
            end = end == std::string::npos ? text.size() : end;
            word = text.substr(at, end - at);
            at = end;
        }
        if (!word.empty()) {
            words.push_back(std::move(word));
        }
    }
    return words;
}

bool MatchesWildcard(std::string const& pattern, std::string const& name) {
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t starP = std::string::npos;
    std::size_t starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || Lower(pattern[p]) == Lower(name[n]))) {
            ++p;
            ++n;
        } else if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starN = n;
        } else if (starP != std::string::npos) {
            p = starP + 1;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    // "*.*" names every file, also one without an extension.
    return p == pattern.size() || pattern.substr(p) == ".*";
}

std::vector<Item> SelectItems(Job& job) {
    Selector selector(job);
    for (std::string const& item : SplitItems(job.Command().lpszItemList)) {
        selector.Select(item);
    }
    return selector.Take();
}

}  // namespace zipengine
