// What the zip tests share: a scratch folder, files to put in it, a command
// whose output is read, and a zip command with a rename procedure that names
// entries after their path below a root, as the applications do.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "nvk/archive/zip_cmd.h"

namespace nvk::ziptest {

class Scratch {
public:
    Scratch() {
        std::string pattern = (std::filesystem::temp_directory_path() / "nvk_zip_XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~Scratch() { std::filesystem::remove_all(m_path); }
    Scratch(Scratch const&) = delete;
    Scratch& operator=(Scratch const&) = delete;

    std::string operator/(std::string const& name) const { return m_path + "/" + name; }
    std::string const& str() const { return m_path; }

    // Writes `content` to `name`, making its folders.
    std::string Put(std::string const& name, std::string const& content) const {
        std::string path = *this / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

private:
    std::string m_path;
};

struct Output {
    int status;
    std::string text;
};

// Runs a shell command, standard error with standard output.
inline Output Shell(std::string const& command) {
    Output output{-1, {}};
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        return output;
    }
    char buffer[4096];
    std::size_t read = 0;
    while ((read = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0) {
        output.text.append(buffer, read);
    }
    int status = pclose(pipe);
    output.status = (status & 0x7F) == 0 ? (status >> 8) & 0xFF : -1;
    return output;
}

// A Python expression over `z`, the archive opened by zipfile.
inline Output Python(std::string const& archive, std::string const& expression) {
    return Shell("python3 -c 'import zipfile,sys; z = zipfile.ZipFile(sys.argv[1]); print(" +
                 expression + ")' '" + archive + "'");
}

// An add command of the items whose entries are named below `root`.
class RootedZip : public EZipCmd {
public:
    RootedZip(std::string const& archive, std::string const& items, std::string root)
        : EZipCmd(archive.c_str(), items.c_str()), m_root(std::move(root) + "/") {
        lpRenameProc = Rename;
        lpRenameUserData = this;
    }

private:
    static int Rename(ZIPRENAMEREC* record, void* data) {
        std::string const& root = static_cast<RootedZip*>(data)->m_root;
        std::string source = record->szSourcePath;
        if (source.starts_with(root)) {
            std::snprintf(record->szNewName, sizeof(record->szNewName), "%s",
                          source.substr(root.size()).c_str());
        }
        return 0;
    }

    std::string m_root;
};

}  // namespace nvk::ziptest
