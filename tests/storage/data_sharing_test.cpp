// A record file that another process changes between two operations of its
// holder: a record appended there, or a range locked there, is seen by the
// next insertion, whatever the holder learnt of the file before.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "os/api/environment.h"
#include "os/api/file.h"
#include "os/api/module.h"
#include "storage/data_format.h"
#include "storage_support.h"
#include "support/child_process.h"

namespace nvk::test {
namespace {

using nvk::data_format::kHeaderSize;

constexpr const char* kChildVariable = "NVK_DATA_SHARING_CHILD";
constexpr std::uint32_t kRecord = 64;

bool Exists(const std::string& path) {
    return std::filesystem::exists(path);
}

// Run as a child ("append FILE" or "lock FILE OFFSET READY RELEASE" in the
// variable): appends one record's bytes 'x' to FILE through a handle of its
// own, or locks one record's bytes at OFFSET and holds them until RELEASE
// exists, having made READY.
const bool kChild = [] {
    char task[2048] = {};
    if (os::GetEnvironmentVariableA(kChildVariable, task, sizeof task) == 0) {
        return false;
    }
    char verb[16] = {};
    char path[1024] = {};
    unsigned long offset = 0;
    char ready[1024] = {};
    char release[1024] = {};
    std::sscanf(task, "%15s %1023s %lu %1023s %1023s", verb, path, &offset, ready, release);
    os::HANDLE file = os::CreateFileA(path, os::GENERIC_READ | os::GENERIC_WRITE,
                                      os::FILE_SHARE_READ | os::FILE_SHARE_WRITE, nullptr,
                                      os::OPEN_EXISTING, os::FILE_ATTRIBUTE_NORMAL, nullptr);
    int status = file != os::INVALID_HANDLE_VALUE ? 0 : 100;
    if (status == 0 && std::string(verb) == "append") {
        const std::string bytes(kRecord, 'x');
        os::DWORD done = 0;
        os::SetFilePointer(file, 0, nullptr, os::FILE_END);
        status = os::WriteFile(file, bytes.data(), kRecord, &done, nullptr) ? 0 : 101;
    } else if (status == 0) {
        status = os::LockFile(file, offset, 0, kRecord, 0) ? 0 : 102;
        std::ofstream(ready).put('1');
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!Exists(release) && std::chrono::steady_clock::now() < giveUp) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    std::exit(status);
}();

os::PROCESS_INFORMATION StartChild(const std::string& task) {
    char self[1024] = {};
    os::GetModuleFileNameA(nullptr, self, sizeof self);
    os::SetEnvironmentVariableA(kChildVariable, task.c_str());
    os::PROCESS_INFORMATION process = StartProcess("\"" + std::string(self) + "\"");
    os::SetEnvironmentVariableA(kChildVariable, nullptr);
    return process;
}

class SharedRecords : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(1, m_File.Create(m_Path.c_str(), kRecord));
        ASSERT_NE(nullptr, m_File.Open(m_Path.c_str()));
        Insert(1);
    }
    void Insert(std::uint32_t tag) {
        std::memset(m_File.Adresse(), 'r', kRecord);
        std::memcpy(m_File.Adresse(), &tag, 4);
        m_File.Insere(nullptr, 0);
    }
    std::uint64_t Size() const { return std::filesystem::file_size(m_Path.c_str()); }
    std::string Slot(std::uint32_t number) const {
        std::ifstream in(m_Path.c_str(), std::ios::binary);
        in.seekg(kHeaderSize + (number - 1) * kRecord);
        std::string bytes(kRecord, '\0');
        in.read(bytes.data(), kRecord);
        return bytes;
    }

    TempPath m_Path{"shared.dat"};
    EDataFile m_File;
};

TEST_F(SharedRecords, AnInsertionGoesPastWhatAnotherProcessAppended) {
    os::PROCESS_INFORMATION child = StartChild(std::string("append ") + m_Path.c_str());
    ASSERT_EQ(0u, FinishProcess(child, 60000));
    Insert(3);
    EXPECT_EQ(Size(), kHeaderSize + 3 * kRecord);
    EXPECT_EQ(Slot(2), std::string(kRecord, 'x'));
    m_File.Read(3, nullptr);
    std::uint32_t tag = 0;
    std::memcpy(&tag, m_File.Adresse(), 4);
    EXPECT_EQ(tag, 3u);
}

TEST_F(SharedRecords, AnInsertionIntoARangeAnotherProcessLockedWritesNothing) {
    const std::string ready = std::string(m_Path.c_str()) + ".ready";
    const std::string release = std::string(m_Path.c_str()) + ".release";
    os::PROCESS_INFORMATION child =
        StartChild(std::string("lock ") + m_Path.c_str() + " " +
                   std::to_string(kHeaderSize + kRecord) + " " + ready + " " + release);
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!Exists(ready) && std::chrono::steady_clock::now() < giveUp) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    Insert(2);
    EXPECT_EQ(Size(), kHeaderSize + kRecord);
    std::ofstream(release).put('1');
    EXPECT_EQ(0u, FinishProcess(child, 60000));
    Insert(2);
    EXPECT_EQ(Size(), kHeaderSize + 2 * kRecord);
    EXPECT_EQ(Slot(2).substr(4), std::string(kRecord - 4, 'r'));
}

}  // namespace
}  // namespace nvk::test
