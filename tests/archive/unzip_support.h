// What the unzip tests share: a scratch folder, archives made by programs we
// did not write (Python's zipfile, Info-ZIP zip) or written here byte by
// byte, and a command record.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "nvk/archive/unzip_cmd.h"

namespace unzip_test {

namespace fs = std::filesystem;

class Scratch {
public:
    Scratch() {
        std::string pattern = (fs::temp_directory_path() / "nvk-unzip-XXXXXX").string();
        m_Path = mkdtemp(pattern.data());
    }
    ~Scratch() { fs::remove_all(m_Path); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    fs::path operator/(const std::string& name) const { return m_Path / name; }
    const fs::path& Path() const { return m_Path; }

private:
    fs::path m_Path;
};

// Runs a Python program with `folder` as its current folder; zipfile is
// imported as z.
inline void Python(const fs::path& folder, const std::string& program) {
    fs::path script = folder / "make.py";
    std::ofstream(script) << "import zipfile as z, os\n" << program << '\n';
    std::string command = "cd '" + folder.string() + "' && python3 make.py";
    ASSERT_EQ(std::system(command.c_str()), 0) << program;
}

// A member of a stored archive: any name, even one no archiver would write,
// and the "made by" system with its external attributes.
struct Member {
    std::string Name;
    std::string Data;
    std::uint16_t DosDate = (41 << 9) | (1 << 5) | 1;  // 1 January 2021
    std::uint8_t System = 0;                           // 0 DOS, 3 Unix
    std::uint32_t External = 0;
};

// Writes `members` uncompressed, as a plain archive without extra fields.
inline void WriteStored(const fs::path& archive, const std::vector<Member>& members) {
    std::string bytes;
    auto put = [&bytes](std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
        }
    };
    auto crc = [](const std::string& data) {
        std::uint32_t value = 0xFFFFFFFF;
        for (unsigned char c : data) {
            value ^= c;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value >> 1) ^ (0xEDB88320 & (0 - (value & 1)));
            }
        }
        return ~value;
    };
    // The fields that a local header and its central entry share.
    auto common = [&](const Member& member) {
        put(20, 2);
        put(0, 2);
        put(0, 2);
        put(0, 2);
        put(member.DosDate, 2);
        put(crc(member.Data), 4);
        put(static_cast<std::uint32_t>(member.Data.size()), 4);
        put(static_cast<std::uint32_t>(member.Data.size()), 4);
        put(static_cast<std::uint32_t>(member.Name.size()), 2);
        put(0, 2);
    };
    std::vector<std::uint32_t> offsets;
    for (const Member& member : members) {
        offsets.push_back(static_cast<std::uint32_t>(bytes.size()));
        put(0x04034b50, 4);
        common(member);
        bytes += member.Name + member.Data;
    }
    const auto directory = static_cast<std::uint32_t>(bytes.size());
    for (std::size_t i = 0; i < members.size(); ++i) {
        put(0x02014b50, 4);
        put(static_cast<std::uint32_t>(members[i].System << 8) | 20, 2);
        common(members[i]);
        put(0, 2);  // comment
        put(0, 2);  // disk
        put(0, 2);  // internal attributes
        put(members[i].External, 4);
        put(offsets[i], 4);
        bytes += members[i].Name;
    }
    const auto count = static_cast<std::uint32_t>(members.size());
    const auto size = static_cast<std::uint32_t>(bytes.size()) - directory;
    put(0x06054b50, 4);
    put(0, 4);
    put(count, 2);
    put(count, 2);
    put(size, 4);
    put(directory, 4);
    put(0, 2);
    std::ofstream(archive, std::ios::binary) << bytes;
}

inline std::string Read(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// A command over `archive` for `function`, quiet, on items "*".
struct Command : EUnzipCmd {
    Command(const fs::path& archive, const fs::path& destination, const char* items = "*")
        : EUnzipCmd(archive.string().c_str(), destination.string().c_str(), items) {}
};

}  // namespace unzip_test
