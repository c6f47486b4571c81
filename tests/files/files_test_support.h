// What the file tests share: a scratch tree in the temporary folder, made and
// read with the standard library so that the code under test is not its own
// witness, and a scoped environment variable.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "nvk/core/chaine.h"

namespace nvk::files::test {

class TempTree {
public:
    TempTree() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "nvk_files_XXXXXX").string();
        m_Path = mkdtemp(pattern.data());
    }
    ~TempTree() {
        std::error_code ignored, walking;
        // Incremented with an error code: a destructor must not throw.
        for (std::filesystem::recursive_directory_iterator entry(m_Path, walking), end;
             !walking && entry != end; entry.increment(walking)) {
            std::filesystem::permissions(entry->path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ignored);
        }
        std::filesystem::remove_all(m_Path, ignored);
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    // The native path of `relative` ("a/b.txt").
    std::string Native(const std::string& relative = "") const {
        return relative.empty() ? m_Path : m_Path + "/" + relative;
    }
    // The path in drive form, as the library writes it ("Z:\\tmp\\..."; on
    // Windows the temporary folder has a drive of its own already).
    Chaine Path(const std::string& relative = "") const {
#ifdef _WIN32
        std::string windows = Native(relative);
#else
        std::string windows = "Z:" + Native(relative);
#endif
        for (char& c : windows) {
            c = c == '/' ? '\\' : c;
        }
        return Chaine(windows.c_str());
    }
    // Makes a file, and the folders above it.
    void File(const std::string& relative, const std::string& content = "x") const {
        std::filesystem::create_directories(std::filesystem::path(Native(relative)).parent_path());
        std::ofstream(Native(relative), std::ios::binary) << content;
    }
    void Folder(const std::string& relative) const {
        std::filesystem::create_directories(Native(relative));
    }
    bool Exists(const std::string& relative) const {
        return std::filesystem::exists(std::filesystem::symlink_status(Native(relative)));
    }
    std::string Read(const std::string& relative) const {
        std::ifstream in(Native(relative), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

private:
    std::string m_Path;
};

class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::string& value) : m_Name(name) {
        if (const char* old = std::getenv(name)) {
            m_Old = old;
        }
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnv() { m_Old ? setenv(m_Name.c_str(), m_Old->c_str(), 1) : unsetenv(m_Name.c_str()); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string m_Name;
    std::optional<std::string> m_Old;
};

}  // namespace nvk::files::test
