// File names and paths: the string rules with their deliberate asymmetries,
// then the operations that ask the file system, on a scratch folder mapped
// as drive T:.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>

#include "nvk/context/init_registry.h"
#include "nvk/core/chaine.h"
#include "os/api/file.h"
#include "os/api/sync.h"

namespace {

namespace fs = std::filesystem;

std::string Str(const Chaine& value) {
    return value.c_str();
}

Chaine Normalized(const char* path) {
    Chaine value(path);
    return value.NormalizePath();
}

Chaine ValidName(const char* text, bool devices = true) {
    Chaine value(text);
    return value.MakeValidFileName(devices);
}

TEST(ChaineFileTest, SplittingKnowsRootsAndTheSingleSeparator) {
    Chaine name("a.txt");
    EXPECT_EQ(name.GetFileName().c_str(), name.c_str());  // shared, not copied
    EXPECT_EQ(Str(Chaine("c:\\x\\").GetFileName()), "");
    EXPECT_EQ(Str(Chaine("c:x").GetFileName()), "x");
    EXPECT_EQ(Str(Chaine("\\\\srv\\share").GetFileName()), "");
    EXPECT_EQ(Str(Chaine("c:\\a.b\\c").GetExtension()), "");
    EXPECT_EQ(Str(Chaine("a.b.c").GetExtension()), "c");
    EXPECT_EQ(Str(Chaine(".x").GetExtension()), "x");
    EXPECT_EQ(Str(Chaine("c:\\a\\b.txt").GetFolder()), "c:\\a");
    EXPECT_EQ(Str(Chaine("c:\\b.txt").GetFolder()), "c:\\");
    EXPECT_EQ(Str(Chaine("b.txt").GetFolder()), "");
    EXPECT_EQ(Str(Chaine("\\\\srv\\share\\a").GetFolder()), "\\\\srv\\share\\");
    EXPECT_EQ(Str(Chaine("c:\\a\\b.txt").GetFolderSlash()), "c:\\a\\");

    for (const char* root : {"c:\\", "c:", "\\\\srv\\share\\", "\\\\srv\\share", "//srv/share"}) {
        EXPECT_TRUE(Chaine(root).IsRootPath()) << root;
    }
    EXPECT_EQ(Str(Chaine("\\\\srv\\share").GetRoot()), "\\\\srv\\share\\");
    EXPECT_FALSE(Chaine("\\\\srv").IsRootPath());
    // One leading separator: the root is "\", the rest the separator alone.
    Chaine root;
    Chaine rest;
    Chaine("\\dir\\x").SplitRoot(root, rest);
    EXPECT_EQ(Str(root), "\\");
    EXPECT_EQ(Str(rest), "\\");
    EXPECT_FALSE(Chaine("\\").IsRootPath());
    Chaine("dir\\x").SplitRoot(root, rest);
    EXPECT_TRUE(root.IsEmpty() && rest.IsEmpty());

    EXPECT_TRUE(Chaine("\\\\").IsAbsolutePath());
    EXPECT_FALSE(Chaine("c:").IsAbsolutePath());
    EXPECT_FALSE(Chaine("c:/x").IsAbsolutePath());
    EXPECT_TRUE(Chaine("c:\\x").IsAbsolutePath());
    Chaine slashes("c:\\a/\\\\");
    EXPECT_EQ(Str(slashes.RemoveTrailingSlash()), "c:\\a");
    Chaine driveRoot("c:\\");
    EXPECT_EQ(Str(driveRoot.RemoveTrailingSlash()), "c:\\");
}

TEST(ChaineFileTest, JoiningAndNormalising) {
    EXPECT_EQ(Str(PathJoin("c:", "x")), "c:x");
    EXPECT_EQ(Str(PathJoin("c:\\a", "\\x")), "c:\\a\\x");
    EXPECT_EQ(Str(PathJoin("c:\\a\\", "\\x")), "c:\\a\\x");
    EXPECT_EQ(Str(PathJoin("", "x")), "x");
    EXPECT_EQ(Str(PathJoin("c:\\a", "")), "c:\\a\\");
    EXPECT_EQ(Str(Chaine("c:\\a\\b") / "..\\c"), "c:\\a\\c");
    EXPECT_EQ(Str(Chaine("c:\\a\\b") / "\\x"), "c:\\x");
    EXPECT_EQ(Str(Chaine("c:\\a") / "d:\\y\\.\\z"), "d:\\y\\z");
    EXPECT_EQ(Str(Chaine("\\\\srv\\share\\a") / "\\x"), "\\\\srv\\share\\x");
    EXPECT_EQ(Str(Chaine("c:\\a") / ""), "c:\\a");

    EXPECT_EQ(Str(Normalized("c:\\a\\..\\b")), "c:\\b");
    EXPECT_EQ(Str(Normalized("c:\\..")), "c:\\");
    EXPECT_EQ(Str(Normalized("a\\.\\b")), "a\\b");
    EXPECT_EQ(Str(Normalized("..\\..\\a")), "..\\..\\a");
    EXPECT_EQ(Str(Normalized("a\\..\\..\\b")), "..\\b");
    // The root stays as written; what follows gets "\\".
    EXPECT_EQ(Str(Normalized("c:/a/./b/../c")), "c:/a\\c");
    EXPECT_EQ(Str(Normalized("\\\\srv\\share\\a\\..")), "\\\\srv\\share\\");
}

// ".." stops at a root instead of dropping it: a relative result would
// resolve against the current folder. Relative paths keep their "..".
TEST(ChaineFileTest, DotDotStopsAtTheRoot) {
    EXPECT_EQ(Str(Normalized("c:\\..\\..\\a")), "c:\\a");
    EXPECT_EQ(Str(Normalized("c:\\a\\b\\..\\..\\..")), "c:\\");
    EXPECT_EQ(Str(Normalized("\\a\\..\\..\\b")), "\\b");
    EXPECT_EQ(Str(Normalized("\\a\\..")), "\\");
    EXPECT_EQ(Str(Normalized("\\\\srv\\share\\a\\..\\..\\b")), "\\\\srv\\share\\b");
    EXPECT_EQ(Str(Normalized("c:/a/../../b")), "c:/b");
    EXPECT_EQ(Str(Normalized("c:a\\..\\..\\b")), "c:..\\b");  // the drive's own folder
    EXPECT_EQ(Str(Chaine("c:\\a") / "..\\..\\x"), "c:\\x");
    EXPECT_EQ(Str(Normalized("a\\..\\..\\..\\b")), "..\\..\\b");
}

// NormalizePath as the recursion it is defined by: the folder first, then the
// last name; with ".." stopping at a root.
Chaine Recursive(const Chaine& value) {
    if (value.IsRootPath()) {
        return value;
    }
    Chaine parent = value.GetFolder();
    Chaine name = value.GetFileName();
    if (parent.IsRootPath() && value.IsAbsolutePath()) {
        return name == "." || name == ".." ? parent : PathJoin(parent, name);
    }
    if (!parent.IsEmpty()) {
        parent = Recursive(parent);
    } else if (value[0] == '\\') {
        parent = "\\";
    }
    if (name == ".." && !parent.IsEmpty() && !(parent.GetFileName() == "..")) {
        if (parent.IsRootPath() || parent == "\\") {
            return parent.Length() == 2 ? PathJoin(parent, name) : parent;
        }
        Chaine folder = parent.GetFolder();
        return folder.IsEmpty() && parent[0] == '\\' ? Chaine("\\") : folder;
    }
    return name == "." ? parent : PathJoin(parent, name);
}

TEST(ChaineFileTest, NormalisingAgreesWithTheRecursionOnRandomPaths) {
    std::mt19937 random(5);
    const char* heads[] = {"",        "c:\\", "c:", "c:/", "\\", "/", "\\\\srv\\share\\",
                           "\\\\srv", "//s/h"};
    const char* names[] = {"a", "bc", ".", "..", "", "..", "x.y"};
    const char seps[] = {'\\', '/', '\\', ':'};
    for (int round = 0; round < 20000; ++round) {
        std::string path = heads[random() % std::size(heads)];
        const int count = static_cast<int>(random() % 7);
        for (int i = 0; i < count; ++i) {
            path += names[random() % std::size(names)];
            if (i + 1 < count || random() % 4 == 0) {
                path += seps[random() % std::size(seps)];
            }
        }
        EXPECT_EQ(Str(Normalized(path.c_str())), Str(Recursive(Chaine(path.c_str())))) << path;
    }
}

// Memory and time in proportion to the path: a recursion with a copy of the
// folder at each level would take the square of it, and its stack.
TEST(ChaineFileTest, NormalisingALongPathTakesLinearMemory) {
    std::string path = "c:";
    for (int i = 0; i < 100000; ++i) {
        path += "\\ab\\.\\cd\\..";
    }
    EXPECT_EQ(Normalized(path.c_str()).Length(), 3 * 100000 + 2);
}

TEST(ChaineFileTest, ValidNamesLoseForbiddenCharactersAndDefuseDevices) {
    EXPECT_EQ(Str(ValidName("con")), "con_");
    EXPECT_EQ(Str(ValidName("COM3")), "COM3_");
    EXPECT_EQ(Str(ValidName("lpt9")), "lpt9_");
    EXPECT_EQ(Str(ValidName("COM0")), "COM0");
    EXPECT_EQ(Str(ValidName("COM10")), "COM10");
    EXPECT_EQ(Str(ValidName("con", false)), "con");
    EXPECT_EQ(Str(ValidName("a:b?.txt. ")), "ab.txt");
    EXPECT_EQ(Str(ValidName("...")), "_");
    EXPECT_EQ(Str(ValidName("...", false)), "");
    EXPECT_EQ(Str(ValidName("  Soci\xE9t\xE9 \"A/B\"\r\r\nDupont\tet\x01 fils\r\n")),
              "Soci\xE9t\xE9 AB Dupont et fils");
    Chaine zeros("a\0b", 3);
    EXPECT_EQ(Str(zeros.MakeValidFileName(true)), "ab");

    EXPECT_TRUE(Chaine("c:\\dir\\a.txt").IsValidFileName());
    EXPECT_FALSE(Chaine("c:\\dir\\*.txt").IsValidFileName());
    EXPECT_FALSE(Chaine("").IsValidFileName());
}

// Sets (or with null, removes) a variable for the scope of a test.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        const char* old = std::getenv(name);
        old_ = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
        Set(value);
    }
    ~ScopedEnv() { Set(old_ ? old_->c_str() : nullptr); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    void Set(const char* value) {
        value != nullptr ? setenv(name_.c_str(), value, 1) : unsetenv(name_.c_str());
    }
    std::string name_;
    std::optional<std::string> old_;
};

class ChaineFileSystemTest : public ::testing::Test {
protected:
    ChaineFileSystemTest()
        : folder_(fs::temp_directory_path() /
                  ("nvk_chaine_file_" +
                   std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                   ::testing::UnitTest::GetInstance()->current_test_info()->name())),
          drives_("NVK_DRIVES", ("T=" + folder_.string() + ";N=" + folder_.string() +
                                 "/share;\\\\FS\\Compta=" + folder_.string() + "/share")
                                    .c_str()) {
        fs::create_directories(folder_);
    }
    ~ChaineFileSystemTest() override { fs::remove_all(folder_); }

    // `relative` below the scratch folder: on drive T: here, by its own path
    // on Windows, which has no such map.
    std::string At(const std::string& relative) const {
#ifdef _WIN32
        std::string path = folder_.string() + "\\" + relative;
        std::replace(path.begin(), path.end(), '/', '\\');
        return path;
#else
        return "T:\\" + relative;
#endif
    }

    fs::path folder_;
    ScopedEnv drives_;
};

TEST_F(ChaineFileSystemTest, ExistenceFoldersAndWholeFiles) {
    fs::create_directories(folder_ / "dir");
    EXPECT_FALSE(Chaine(At("dir").c_str()).FileExists());
    EXPECT_TRUE(Chaine(At("dir\\").c_str()).IsFolder());
    EXPECT_TRUE(Chaine(At("dir\\..\\dir").c_str()).FolderPathExists());
    EXPECT_TRUE(Chaine(At("").c_str()).FolderPathExists());
    EXPECT_FALSE(Chaine(At("none").c_str()).FolderPathExists());
    EXPECT_FALSE(Chaine("").FolderPathExists());

    const Chaine content("line 1\r\n\0zero", 14);
    EXPECT_TRUE(content.WriteToFile(At("dir\\f.bin").c_str()));
    EXPECT_FALSE(content.WriteToFile(At("none\\f.bin").c_str()));
    EXPECT_TRUE(Chaine(At("dir\\f.bin").c_str()).FileExists());
    EXPECT_TRUE(Chaine(At("dir\\F.BIN").c_str()).FileExists());  // names without regard to case
    EXPECT_FALSE(Chaine(At("dir\\f.bin").c_str()).IsFolder());
    // A shorter text written over a longer one leaves nothing behind.
    EXPECT_TRUE(Chaine("short").WriteToFile(At("dir\\f.bin").c_str()));
    EXPECT_TRUE(content.WriteToFile(At("dir\\g.bin").c_str()));

    nvk::os::HANDLE file =
        nvk::os::CreateFileA(At("dir\\g.bin").c_str(), nvk::os::GENERIC_READ,
                             nvk::os::FILE_SHARE_READ, nullptr, nvk::os::OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, nvk::os::INVALID_HANDLE_VALUE);
    Chaine read("old");
    EXPECT_TRUE(read.ReadFromHandle(file));
    EXPECT_TRUE(read == content);
    nvk::os::CloseHandle(file);
    EXPECT_EQ(fs::file_size(folder_ / "dir/f.bin"), 5u);

    EXPECT_EQ(MakeDirectoryPath(At("a\\b\\..\\c\\d\\").c_str(), nullptr), 1);
    EXPECT_TRUE(fs::is_directory(folder_ / "a/c/d"));
    EXPECT_EQ(MakeDirectoryPath(At("").c_str(), nullptr), 1);
    EXPECT_EQ(MakeDirectoryPath(At("dir\\f.bin\\x").c_str(), nullptr), 0);
}

TEST_F(ChaineFileSystemTest, NetworkPathsAndServers) {
    EXPECT_EQ(Str(Chaine("\\\\srv\\data\\a").GetNetworkPath()), "\\\\srv\\data\\");
    EXPECT_EQ(Str(Chaine("\\\\srv\\data\\a").GetServerName()), "srv");
    EXPECT_EQ(Str(Chaine(At("a").c_str()).GetNetworkPath()), "");
}

TEST_F(ChaineFileSystemTest, MappedNetworkDrivesNameTheirServer) {
    fs::create_directories(folder_ / "share");
    EXPECT_EQ(Str(Chaine("n:\\2024\\a.txt").GetNetworkPath()), "\\\\FS\\Compta");
    EXPECT_EQ(Str(Chaine("n:\\2024\\a.txt").GetServerName()), "FS");
    EXPECT_TRUE(Chaine("\\\\FS\\Compta").FolderPathExists());
}

TEST_F(ChaineFileSystemTest, WellKnownPlaces) {
    Chaine exe;
    exe.GetExePath();
    EXPECT_TRUE(exe.FileExists()) << exe.c_str();
    Chaine exeFolder;
    EXPECT_EQ(Str(exeFolder.GetExeFolder()), Str(exe.GetFolder()));
    // The cache is registered once, under the id of its line.
    EXPECT_FALSE(nvk::InitRegistry::Module().Register(
        EInitInfos(nullptr, nullptr, "ChaineFile", nullptr, 513)));

    Chaine temp;
    Chaine name;
    name.GetTempName("nvk");
    EXPECT_TRUE(name.FileExists()) << name.c_str();
    EXPECT_EQ(Str(name.GetFolderSlash()), Str(temp.GetTempFolder()));
    EXPECT_TRUE(name.GetFileName().StartsWithNoCase("nvk"));
    nvk::os::DeleteFileA(name);
}

// The current folder named by its drive, and the desktop's folders.
TEST_F(ChaineFileSystemTest, MappedAndDesktopPlaces) {
    Chaine current;
    fs::path start = fs::current_path();
    fs::current_path(folder_);
    EXPECT_EQ(Str(current.GetCurrentFolder()), "T:\\");
    Chaine relative("x\\..\\y");
    EXPECT_EQ(Str(relative.MakeAbsolute()), "T:\\y");
    fs::current_path(start);
    {
        ScopedEnv home("HOME", folder_.string().c_str());
        ScopedEnv documents("XDG_DOCUMENTS_DIR", (folder_ / "Docs").string().c_str());
        Chaine special;
        EXPECT_EQ(Str(special.GetDocumentsFolder()), "T:\\Docs");
        EXPECT_EQ(Str(special.GetSpecialFolder(17)), "");
    }
    {
        // Application data off every drive falls back to the old profile.
        ScopedEnv noDrives("NVK_DRIVES", "Z=;C=");
        ScopedEnv data("XDG_DATA_HOME", "/nowhere/data");
        ScopedEnv systemDrive("systemdrive", nullptr);
        ScopedEnv windir("windir", "E:\\Windows");
        Chaine appData;
        appData.GetAppDataFolder();
        EXPECT_TRUE(appData.StartsWithNoCase("E:\\Profiles\\")) << appData.c_str();
        EXPECT_EQ(Str(appData.GetFileName()), "Application Data");
    }
}

}  // namespace
