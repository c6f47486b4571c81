// What the unzip tests share: a scratch folder, archives made by programs we
// did not write (Python's zipfile, Info-ZIP zip), and a command record.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

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

inline std::string Read(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// A command over `archive` for `function`, quiet, on items "*".
struct Command : EUnzipCmd {
    Command(const fs::path& archive, const fs::path& destination, const char* items = "*")
        : EUnzipCmd(archive.c_str(), destination.c_str(), items) {}
};

}  // namespace unzip_test
