// Eight processes add to one counter while two more read the file in a loop:
// no update may be lost, and no reader may see a file that is not whole. And
// a writer stopped at any step, or refused room by a file-size limit, leaves
// a whole text; a program holding the file with flock() or a byte-range lock
// makes others wait no longer than their time-out.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "nvk/config/ini_file.h"
#include "os/api/process.h"
#include "os/api/sync.h"
#include "support/child_process.h"

namespace {

namespace fs = std::filesystem;

constexpr int kWriters = 8;
constexpr int kIncrements = 200;
constexpr int kReaders = 2;
constexpr nvk::os::DWORD kPatience = 120000;

nvk::os::PROCESS_INFORMATION Start(const std::string& role, const fs::path& file, int number,
                                   nvk::os::DWORD start) {
    std::string line = "\"" NVK_INI_LOAD_CHILD "\" " + role + " \"" + file.string() + "\" " +
                       std::to_string(number) + " " + std::to_string(start);
    return nvk::test::StartProcess(std::move(line));
}

// The exit status, or 0xDEAD for a process that did not start or end in time.
nvk::os::DWORD Finish(nvk::os::PROCESS_INFORMATION& process) {
    return nvk::test::FinishProcess(process, kPatience);
}

nvk::os::DWORD RunLine(std::string line) {
    return nvk::test::RunProcess(std::move(line), kPatience);
}

std::string Quoted(const fs::path& path) {
    return "\"" + path.string() + "\"";
}

std::string ChildLine(const std::string& role, const fs::path& file, long number) {
    return Quoted(NVK_INI_LOAD_CHILD) + " " + role + " " + Quoted(file) + " " +
           std::to_string(number) + " " + std::to_string(nvk::os::GetTickCount());
}

void Put(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

std::string Slurp(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

class Folder {
public:
    Folder()
        : m_Path(fs::temp_directory_path() /
                 ("nvk_ini_load_" +
                  std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()))) {
        fs::remove_all(m_Path);
        fs::create_directories(m_Path);
    }
    ~Folder() { fs::remove_all(m_Path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    fs::path operator/(const char* name) const { return m_Path / name; }
    long Entries() const {
        return std::distance(fs::directory_iterator(m_Path), fs::directory_iterator());
    }

private:
    fs::path m_Path;
};

// The texts of the file before and after the child's "stop" role, with a
// section `big` of that size that stays.
const std::string kHead = "[Load]\r\nFiller=" NVK_INI_LOAD_FILLER "\r\nCounter=";
std::string Before(std::size_t big) {
    return kHead + "1\r\n\r\n[Big]\r\nk=" + std::string(big, 'b') +
           "\r\n\r\n[Extra]\r\nk=" + std::string(4000, 'x') + "\r\n";
}
std::string After(std::size_t big) {
    return kHead + "2\r\n\r\n[Big]\r\nk=" + std::string(big, 'b') + "\r\n";
}

// Readers and writers give up on the file that `holder` holds once their
// time-out is over, and read it whole once the holder is gone.
void ExpectTheHolderKeepsOpensOutForTheTimeOut(const fs::path& file,
                                               nvk::os::PROCESS_INFORMATION& holder) {
    EIniFile::SetTimeOut(500);
    const Chaine name(file.string().c_str());
    for (const bool readOnly : {true, false}) {
        EIniFile ini;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(ini.Open(name, readOnly));
        const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(
                                std::chrono::steady_clock::now() - start)
                                .count();
        EXPECT_GE(waited, 450);  // clocks of different grain
        EXPECT_LT(waited, 3000);
    }
    nvk::os::TerminateProcess(holder.hProcess, 0);
    Finish(holder);
    const EIniFile ini(name);
    EXPECT_EQ(ini.GetPrivateProfileIntA("S", "N", -1, ""), 1);
}

TEST(IniWholeText, AWriterStoppedAtAnyStepLeavesTheOldOrTheNewText) {
    const Folder folder;
    const fs::path file = folder / "stop.ini";
    int step = 1;
    int firstNew = 0;
    for (bool finished = false; !finished && step < 64; ++step) {
        Put(file, Before(10));
        const long status = RunLine(ChildLine("stop", file, step));
        const std::string text = Slurp(file);
        ASSERT_TRUE(text == Before(10) || text == After(10)) << "stopped at step " << step;
        finished = status == 0;
        ASSERT_TRUE(finished || status == 70) << "status " << status << " at step " << step;
        // Once a step has put the new text in place, every later one has.
        if (text == After(10) && firstNew == 0) {
            firstNew = step;
        }
        EXPECT_EQ(text == After(10), firstNew != 0) << "at step " << step;
    }
    EXPECT_GE(firstNew, 6) << "the new text was in place too soon";
    EXPECT_LT(step, 64) << "the writer never finished";
    // What the stopped writers left behind hinders no later writer.
    Put(file, Before(10));
    EXPECT_EQ(RunLine(ChildLine("stop", file, 0)), 0u);
    EXPECT_EQ(Slurp(file), After(10));
}

TEST(IniWholeText, AFileSizeLimitLeavesTheOldText) {
    const Folder folder;
    const fs::path file = folder / "big.ini";
    const fs::path script = folder / "limited.sh";
    Put(file, Before(300000));
    // At most 100 blocks of 512 or 1024 bytes, and no signal for a write
    // past them: the write fails instead.
    Put(script, "trap '' XFSZ\nulimit -f 100\nexec " + ChildLine("stop", file, 0) + "\n");
    EXPECT_EQ(RunLine("sh " + Quoted(script)), 32u) << "Close reports the failed write";
    EXPECT_EQ(Slurp(file), Before(300000));
    EXPECT_EQ(folder.Entries(), 2) << "a temporary file stayed behind";
}

TEST(IniWholeText, AForeignFlockHoldsNoOneBeyondTheTimeOut) {
    const Folder folder;
    const fs::path file = folder / "held.ini";
    const fs::path ready = folder / "ready";
    const fs::path script = folder / "hold.sh";
    Put(file, "[S]\r\nN=1\r\n");
    // Its output goes nowhere, so that the sleep left behind holds no pipe.
    Put(script, "exec >/dev/null 2>&1\nexec flock -o " + Quoted(file) + " sh -c 'touch " +
                    Quoted(ready) + "; exec sleep 5'\n");
    nvk::os::PROCESS_INFORMATION holder = nvk::test::StartProcess("sh " + Quoted(script));
    ASSERT_NE(holder.hProcess, nullptr);
    for (int i = 0; i < 1000 && !fs::exists(ready); ++i) {
        nvk::os::Sleep(10);
    }
    ASSERT_TRUE(fs::exists(ready));

    ExpectTheHolderKeepsOpensOutForTheTimeOut(file, holder);
}

// The same with the system's own form of a foreign lock: another process
// that locks every byte of the file.
TEST(IniWholeText, AnotherProcesssByteLockHoldsNoOneBeyondTheTimeOut) {
    const Folder folder;
    const fs::path file = folder / "locked.ini";
    Put(file, "[S]\r\nN=1\r\n");
    nvk::os::PROCESS_INFORMATION holder = nvk::test::StartProcess(ChildLine("lock", file, 5000));
    ASSERT_NE(holder.hProcess, nullptr);
    const fs::path ready = folder / "locked.ini.ready";
    for (int i = 0; i < 1000 && !fs::exists(ready); ++i) {
        nvk::os::Sleep(10);
    }
    ASSERT_TRUE(fs::exists(ready));

    ExpectTheHolderKeepsOpensOutForTheTimeOut(file, holder);
}

TEST(IniLoad, WritersLoseNoUpdateAndReadersSeeWholeFiles) {
    const Folder folder;
    const fs::path file = folder / "counter.ini";
    {
        EIniFile ini;
        ASSERT_TRUE(ini.Open(file.string().c_str(), false));
        ini["Load"]["Filler"] = NVK_INI_LOAD_FILLER;
        ini["Load"]["Counter"] = "0";
    }

    // Everyone starts together, once all are running.
    const nvk::os::DWORD start = nvk::os::GetTickCount() + 500;
    std::vector<nvk::os::PROCESS_INFORMATION> readers;
    std::vector<nvk::os::PROCESS_INFORMATION> writers;
    for (int i = 0; i < kReaders; ++i) {
        readers.push_back(Start("reader", file, kWriters * kIncrements, start));
    }
    for (int i = 0; i < kWriters; ++i) {
        writers.push_back(Start("writer", file, kIncrements, start));
    }
    for (auto& writer : writers) {
        EXPECT_EQ(Finish(writer), 0u) << "a writer failed (see ini_load_child.cpp)";
    }
    for (auto& reader : readers) {
        EXPECT_EQ(Finish(reader), 0u) << "a reader failed (see ini_load_child.cpp)";
    }

    const EIniFile ini(file.string().c_str());
    EXPECT_EQ(ini.GetPrivateProfileIntA("Load", "Counter", -1, ""), kWriters * kIncrements);
}

}  // namespace
