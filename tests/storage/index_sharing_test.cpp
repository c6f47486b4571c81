// One index file open in two objects, and in two processes: each sees what
// the other wrote, whatever it keeps of the file.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "os/api/environment.h"
#include "os/api/module.h"
#include "os/api/process.h"
#include "storage_support.h"
#include "support/child_process.h"

namespace nvk::test {
namespace {

constexpr const char* kChildVariable = "NVK_INDEX_SHARING_CHILD";

std::vector<char> Key32(std::uint32_t value) {
    std::vector<char> key(4 + 16, 0);
    std::memcpy(key.data(), &value, 4);
    return key;
}

// Run as a child ("FILE FROM COUNT VALUE" in the variable), this program
// inserts keys FROM to FROM + COUNT - 1, with themselves as values, and ends;
// with a VALUE other than 0 it gives those keys that value instead, by a
// deletion and an insertion that leave the header as it was.
const bool kChild = [] {
    char task[1024] = {};
    if (os::GetEnvironmentVariableA(kChildVariable, task, sizeof task) == 0) {
        return false;
    }
    std::string text(task);
    const std::size_t third = text.rfind(' ');
    const std::size_t second = text.rfind(' ', third - 1);
    const std::size_t first = text.rfind(' ', second - 1);
    const std::uint32_t from = std::stoul(text.substr(first + 1, second - first - 1));
    const std::uint32_t count = std::stoul(text.substr(second + 1, third - second - 1));
    const std::uint32_t value = std::stoul(text.substr(third + 1));
    EIndexFile index;
    int status = index.Open(text.substr(0, first).c_str()) ? 0 : 100;
    for (std::uint32_t k = from; status == 0 && k < from + count; ++k) {
        if (value != 0) {
            status = index.Delete(1, Key32(k).data(), k);
        }
        if (status == 0) {
            status = index.Insere(1, Key32(k).data(), value != 0 ? value : k);
        }
    }
    index.Close();
    std::exit(status);
}();

long InsertInChild(const char* path, std::uint32_t from, std::uint32_t count,
                   std::uint32_t value = 0) {
    char self[1024] = {};
    os::GetModuleFileNameA(nullptr, self, sizeof self);
    const std::string task = std::string(path) + " " + std::to_string(from) + " " +
                             std::to_string(count) + " " + std::to_string(value);
    os::SetEnvironmentVariableA(kChildVariable, task.c_str());
    std::string line = "\"" + std::string(self) + "\"";
    os::PROCESS_INFORMATION process = nvk::test::StartProcess(line);
    os::SetEnvironmentVariableA(kChildVariable, nullptr);
    return static_cast<long>(nvk::test::FinishProcess(process, 60000));
}

class SharedIndex : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(1, m_Reader.Create(m_Path.c_str(), 44));  // 4 entries a page
        ASSERT_EQ(1, m_Reader.Open(m_Path.c_str()));
        ASSERT_EQ(1, m_Reader.CreateIndex(4, 18, 0));
        for (std::uint32_t k = 1; k <= 10; ++k) {
            ASSERT_EQ(0, m_Reader.Insere(1, Key32(k * 10).data(), k * 10));
        }
        ASSERT_EQ(1, m_Writer.Open(m_Path.c_str()));
    }
    // Every key the reader finds, by a walk and by a search each.
    std::vector<std::uint32_t> Walk() {
        std::vector<std::uint32_t> values;
        for (unsigned long v = m_Reader.First(1); v != 0 && values.size() < 1000;
             v = m_Reader.Next()) {
            values.push_back(static_cast<std::uint32_t>(v));
        }
        for (std::uint32_t v : values) {
            EXPECT_EQ(v, m_Reader.Equal(1, Key32(v).data()));
        }
        return values;
    }

    TempPath m_Path{"shared.idx"};
    EIndexFile m_Reader;
    EIndexFile m_Writer;
};

TEST_F(SharedIndex, TwoObjectsSeeEachOthersChanges) {
    EXPECT_EQ(10u, Walk().size());
    // Splits, a new root, and a key changed in place at the same size.
    for (std::uint32_t k = 11; k <= 40; ++k) {
        ASSERT_EQ(0, m_Writer.Insere(1, Key32(k * 10).data(), k * 10));
    }
    EXPECT_EQ(40u, m_Reader.Nombre(1));
    EXPECT_EQ(40u, Walk().size());
    EXPECT_EQ(400u, m_Reader.Last(1));
    ASSERT_EQ(0, m_Writer.Delete(1, Key32(200).data(), 200));
    ASSERT_EQ(0, m_Writer.Insere(1, Key32(200).data(), 201));
    EXPECT_EQ(201u, m_Reader.Equal(1, Key32(200).data()));
    // And the other way round, with an index added.
    ASSERT_EQ(0, m_Reader.Delete(1, Key32(10).data(), 10));
    ASSERT_EQ(2, m_Reader.CreateIndex(8, 20, 1));
    EXPECT_EQ(20u, m_Writer.First(1));
    EXPECT_EQ(39u, m_Writer.Nombre(1));
    EXPECT_EQ(3, m_Writer.CreateIndex(4, 18, 0));
    m_Reader.Close();
    m_Writer.Close();
    CheckedIndex again;
    ASSERT_EQ(1, again.Open(m_Path.c_str()));
    EXPECT_EQ("", again.Check());
}

// What a reader kept from a file untouched for some seconds is trusted until
// the file changes.
TEST_F(SharedIndex, PagesKeptFromAQuietFileGiveWayToAChange) {
    os::Sleep(4000);
    EXPECT_EQ(10u, Walk().size());
    EXPECT_EQ(10u, Walk().size());
    ASSERT_EQ(0, m_Writer.Delete(1, Key32(50).data(), 50));
    ASSERT_EQ(0, m_Writer.Insere(1, Key32(50).data(), 51));
    EXPECT_EQ(51u, m_Reader.Equal(1, Key32(50).data()));
}

// A file cut short by another writer is not read past its new end: the
// pages it lost are missing, and nothing touches the bytes that are gone.
TEST_F(SharedIndex, AFileCutByAnotherWriterIsNotReadPastItsEnd) {
    for (std::uint32_t k = 11; k <= 400; ++k) {
        ASSERT_EQ(0, m_Writer.Insere(1, Key32(k * 10).data(), k * 10));
    }
    EXPECT_EQ(400u, Walk().size());
    ASSERT_GT(std::filesystem::file_size(m_Path.c_str()), 3 * 4096u);
    std::filesystem::resize_file(m_Path.c_str(), 612 + 44);
    EXPECT_EQ(0u, m_Reader.Equal(1, Key32(4000).data()));
    EXPECT_EQ(0u, m_Reader.Last(1));
}

TEST_F(SharedIndex, AnotherProcessWrites) {
    EXPECT_EQ(10u, Walk().size());
    ASSERT_EQ(0, InsertInChild(m_Path.c_str(), 1000, 30));
    EXPECT_EQ(40u, Walk().size());
    EXPECT_EQ(1005u, m_Reader.Equal(1, Key32(1005).data()));
    ASSERT_EQ(0, m_Reader.Delete(1, Key32(1005).data(), 1005));
    ASSERT_EQ(1, InsertInChild(m_Path.c_str(), 1004, 1));  // the child sees it is there
    ASSERT_EQ(0, InsertInChild(m_Path.c_str(), 1005, 1));  // and that this one went
    EXPECT_EQ(1005u, m_Reader.Equal(1, Key32(1005).data()));
    // A page changed under an unchanged header is seen too, at once.
    ASSERT_EQ(0, InsertInChild(m_Path.c_str(), 1010, 1, 7));
    EXPECT_EQ(7u, m_Reader.Equal(1, Key32(1010).data()));
    EXPECT_EQ(40u, m_Reader.Nombre(1));
}

}  // namespace
}  // namespace nvk::test
