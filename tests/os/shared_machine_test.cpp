// What another user of the same machine can make of the OS layer: planted
// setuid files, devices and pipes, temporary folders, descriptors passed to
// started programs, programs in the current folder, links and reused names.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/file_copy.h"
#include "os/api/find.h"
#include "os/api/process.h"
#include "os/api/sync.h"
#include "os/api/temp_file.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

namespace fs = std::filesystem;

class SharedMachineTest : public ::testing::Test {
protected:
    SharedMachineTest() : drives_("NVK_DRIVES", ("T=" + folder_.str()).c_str()) {}

    void Write(const std::string& name, const std::string& content) {
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    mode_t ModeOf(const std::string& name) {
        struct stat info {};
        stat((folder_ / name).c_str(), &info);
        return info.st_mode & 07777;
    }
    DWORD ExitCodeOf(std::string line) {
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, inherit_, 0, nullptr, nullptr,
                            &startup, &process)) {
            return 1000 + GetLastError();
        }
        return test::FinishProcess(process);
    }

    test::TempFolder folder_;
    test::ScopedEnv drives_;
    BOOL inherit_ = FALSE;
};

TEST_F(SharedMachineTest, CopiesCarryNoSetuidBitsAndCopyRegularFilesOnly) {
    Write("planted", "#!/bin/sh\n");
    ASSERT_EQ(chmod((folder_ / "planted").c_str(), 06755), 0);
    ASSERT_TRUE(CopyFileA("T:\\planted", "T:\\backup", FALSE));
    EXPECT_EQ(ModeOf("backup") & 07000, 0u);
    EXPECT_EQ(ModeOf("backup") & 0700, 0700u);

    // A pipe would wait for ever, a device fill the disk: both refused at
    // once, and no target is left behind.
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", folder_ / "zero");
    for (const char* source : {"T:\\pipe", "T:\\zero", "Z:\\dev\\null"}) {
        EXPECT_FALSE(CopyFileA(source, "T:\\copy", FALSE)) << source;
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED) << source;
        EXPECT_FALSE(fs::exists(folder_ / "copy")) << source;
    }
}

TEST_F(SharedMachineTest, TheTemporaryFolderIsTheUsersAlone) {
    test::ScopedEnv tmp("TMP", nullptr);
    test::ScopedEnv temp("TEMP", nullptr);
    test::ScopedEnv cache("XDG_CACHE_HOME", nullptr);
    fs::create_directory(folder_ / "run");
    fs::permissions(folder_ / "run", fs::perms::owner_all);
    test::ScopedEnv runtime("XDG_RUNTIME_DIR", (folder_ / "run").c_str());
    char path[MAX_PATH];
    ASSERT_NE(GetTempPathA(MAX_PATH, path), 0u);
    EXPECT_STREQ(path, "T:\\run\\");

    char name[MAX_PATH];
    ASSERT_NE(GetTempFileNameA(path, "nvk", 0, name), 0u);
    EXPECT_EQ(ModeOf("run/" + fs::path(name + 7).string()), 0600u);

    // A runtime folder that others may enter is not used.
    fs::permissions(folder_ / "run", fs::perms::all);
    EXPECT_EQ(GetTempPathA(MAX_PATH, path), 0u);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);

    // Without one, a folder of mode 0700 in the user's cache folder.
    test::ScopedEnv noRuntime("XDG_RUNTIME_DIR", nullptr);
    test::ScopedEnv home("HOME", (folder_ / "home").c_str());
    ASSERT_NE(GetTempPathA(MAX_PATH, path), 0u);
    EXPECT_STREQ(path, "T:\\home\\.cache\\nvk\\temp\\");
    EXPECT_EQ(ModeOf("home/.cache/nvk/temp"), 0700u);

    // One that another user made for us in advance is refused.
    if (geteuid() == 0) {
        ASSERT_EQ(chown((folder_ / "home/.cache/nvk/temp").c_str(), 65534, 65534), 0);
        EXPECT_EQ(GetTempPathA(MAX_PATH, path), 0u);
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    }
}

TEST_F(SharedMachineTest, StartedProgramsInheritNoDescriptorAndAreNotTakenFromTheCurrentFolder) {
    const int open = ::open("/dev/null", O_RDONLY);  // not close-on-exec
    ASSERT_GE(open, 3);
    const std::string probe = "/bin/sh -c \"test -e /proc/self/fd/" + std::to_string(open) + "\"";
    EXPECT_EQ(ExitCodeOf(probe), 1u);
    inherit_ = TRUE;
    EXPECT_EQ(ExitCodeOf(probe), 0u);
    close(open);

    Write("planted", "#!/bin/sh\nexit 7\n");
    ASSERT_EQ(chmod((folder_ / "planted").c_str(), 0755), 0);
    const fs::path start = fs::current_path();
    fs::current_path(folder_.str());
    EXPECT_EQ(ExitCodeOf("planted"), 1000u + ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ExitCodeOf(".\\planted"), 7u);
    fs::current_path(start);
}

TEST_F(SharedMachineTest, LinksAreReportedAsReparsePoints) {
    fs::create_directory(folder_ / "real");
    fs::create_directory_symlink("/", folder_ / "root");
    WIN32_FIND_DATAA data;
    HANDLE search = FindFirstFileA("T:\\root", &data);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
    FindClose(search);
    EXPECT_EQ(GetFileAttributesA("T:\\root"),
              FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
    EXPECT_EQ(GetFileAttributesA("T:\\real"), FILE_ATTRIBUTE_DIRECTORY);
}

TEST_F(SharedMachineTest, DeleteOnCloseRemovesOnlyTheFileItOpened) {
    HANDLE file = CreateFileA("T:\\scratch", GENERIC_WRITE, FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                              FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    fs::rename(folder_ / "scratch", folder_ / "moved");
    Write("scratch", "someone else's");
    CloseHandle(file);
    EXPECT_TRUE(fs::exists(folder_ / "scratch"));
}

}  // namespace
}  // namespace nvk::os
