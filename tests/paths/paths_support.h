// What the path tests share: an installation of their own (application
// folder, Paths.ini, user folders, registry) in a scratch folder.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "nvk/paths/special_nvk_path.h"
#include "nvk/services/global_dico.h"
#include "os/api/account.h"
#include "os/api/error.h"
#include "os/api/path_map.h"
#include "os/api/shell_folder.h"
#include "os/api/user.h"

namespace nvk::test {

namespace fs = std::filesystem;

inline const std::string kSociety = "NVK-PATHS-TEST";

// The user's SID in text, empty if it cannot be looked up.
inline std::string UserSid() {
    char name[128];
    os::DWORD nameSize = sizeof name;
    EXPECT_TRUE(os::GetUserNameA(name, &nameSize));
    os::BYTE sid[64];
    os::DWORD sidSize = sizeof sid;
    char domain[64];
    os::DWORD domainSize = sizeof domain;
    os::SID_NAME_USE use{};
    char* text = nullptr;
    if (!os::LookupAccountNameA(nullptr, name, sid, &sidSize, domain, &domainSize, &use) ||
        !os::ConvertSidToStringSidA(sid, &text)) {
        return {};
    }
    std::string result = text;
    os::LocalFree(text);
    return result;
}

class PathsTest : public testing::Test {
protected:
    PathsTest() {
        std::string pattern = (fs::temp_directory_path() / "nvk_paths_XXXXXX").string();
        m_Root = mkdtemp(pattern.data());
        fs::create_directories(m_Root / "app");
        fs::create_directories(m_Root / "home/Documents");
        setenv("XDG_DATA_HOME", (m_Root / "home/data").string().c_str(), 1);
        setenv("XDG_DOCUMENTS_DIR", (m_Root / "home/Documents").string().c_str(), 1);
        setenv("NVK_REGISTRY_DIR", m_Root.string().c_str(), 1);
        SpecialNVKPath::SetAppFolder(Win(m_Root / "app"));
        GlobalDico::Get().SetValue("App.Name", "Compta");
        GlobalDico::Get().SetValue("App.ShortName", "CPT");
        // A society of the tests' own: the shared defaults lie in system
        // folders, which a test run as root must not fill with the family's.
        GlobalDico::Get().SetValue("App.SocietyID", kSociety.c_str());
    }
    ~PathsTest() override {
        std::error_code ignored;
        // What the tests made below the user's own data folder (outside the
        // scratch folder where the system's user folders are not the
        // fixture's).
        fs::remove_all(os::ToNativePath((UserFolder(os::CSIDL_APPDATA) + "\\" + kSociety).c_str()),
                       ignored);
        SpecialNVKPath::SetAppFolder("");
        for (const char* name : {"XDG_DATA_HOME", "XDG_DOCUMENTS_DIR", "NVK_REGISTRY_DIR"}) {
            unsetenv(name);
        }
        fs::remove_all(m_Root, ignored);
    }

    // The drive form of a native path, as the library gives paths.
    static Chaine Win(const fs::path& path) {
        return os::ToWindowsPath(path.string().c_str()).c_str();
    }
    std::string Folder(const std::string& relative) const { return Win(m_Root / relative).c_str(); }
    // A user's folder as the system names it: on the POSIX build the
    // fixture's XDG folders, on Windows the user's profile.
    static std::string UserFolder(int csidl) {
        char path[os::MAX_PATH] = "";
        EXPECT_EQ(os::SHGetFolderPathA(nullptr, csidl, nullptr, 0, path), os::S_OK);
        return path;
    }

    void WritePathsIni(const std::string& text) const {
        std::ofstream(m_Root / "app/Paths.ini", std::ios::binary) << text;
    }
    std::string ReadPathsIni() const {
        std::ifstream in(m_Root / "app/Paths.ini", std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    static std::string Get(SpecialNVKPath::ID id,
                           SpecialNVKPath::NotExistAction action = SpecialNVKPath::EmptyIfMissing) {
        return SpecialNVKPath::Get(id, action).c_str();
    }
    static std::string Get(SpecialNVKPath::LegacyID id) { return SpecialNVKPath::Get(id).c_str(); }
    static Chaine C(const std::string& text) { return text.c_str(); }
    static std::string Get(const char* key,
                           SpecialNVKPath::NotExistAction action = SpecialNVKPath::EmptyIfMissing) {
        return SpecialNVKPath::Get(Chaine(key), action).c_str();
    }

    fs::path m_Root;
};

}  // namespace nvk::test
