// EUnzipCmd over the real engine: batches, progress scaling, the caller's
// pointers, the texts it hands the engine and the texts of its codes.
#include <cstring>
#include <string>
#include <vector>

#include "nvk/archive/unzip_engine.h"
#include "os/api/module.h"
#include "unzip_support.h"

namespace {

using namespace unzip_test;

struct Progress {
    std::vector<long> Percents;
    std::vector<std::string> Texts;
    int Waits = 0;
};

int Record(char* text, long percent, void* data) {
    auto* progress = static_cast<Progress*>(data);
    progress->Percents.push_back(percent);
    progress->Texts.emplace_back(text);
    if (std::strcmp(text, "Veuillez patienter...") == 0) {
        ++progress->Waits;
    }
    return 0;
}

// An item list of `count` members m0 ... , the ones from `badFrom` to
// `badTo` naming nothing.
std::string Items(int count, int badFrom = -1, int badTo = -1) {
    std::string items;
    for (int i = 0; i < count; ++i) {
        items += (i >= badFrom && i < badTo ? "\"none" : "\"m") + std::to_string(i) + "\" ";
    }
    return items;
}

class UnzipCmdTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_Scratch = new Scratch;
        std::vector<Member> members;
        for (int i = 0; i < 1200; ++i) {
            members.push_back({"m" + std::to_string(i), std::string(i % 7, 'x')});
        }
        members.push_back({"with blank.txt", "blank"});
        WriteStored(Archive(), members);
    }
    static void TearDownTestSuite() { delete s_Scratch; }
    static fs::path Archive() { return *s_Scratch / "many.zip"; }

    // Tests `count` items and returns the code, the progress seen and the
    // pointers of the record after the run.
    int Test(const std::string& items, Progress& progress) {
        Command command(Archive(), s_Scratch->Path(), items.c_str());
        command.function = nvk::unzip::kTestNamed;
        command.lpMajorStatus = Record;
        command.lpMajorUserData = &progress;
        char* filespec = command.lpszFilespec;
        int code = command.dunzip();
        EXPECT_EQ(command.lpszFilespec, filespec);
        EXPECT_EQ(command.lpMajorStatus, &Record);
        EXPECT_EQ(command.lpMajorUserData, &progress);
        return code;
    }

    static Scratch* s_Scratch;
};

Scratch* UnzipCmdTest::s_Scratch = nullptr;

TEST_F(UnzipCmdTest, BatchesOf500WithOneProgressForTheRun) {
    Progress small;
    EXPECT_EQ(Test(Items(499), small), 0);
    EXPECT_EQ(small.Waits, 1);
    // One call: the engine's own percentages reach the callback unchanged.
    EXPECT_EQ(small.Percents[498], 498 * 100 / 499);
    EXPECT_EQ(small.Texts[498], "El\xe9ment 499 sur un total de 499");

    Progress exact;
    EXPECT_EQ(Test(Items(500), exact), 0);
    EXPECT_EQ(exact.Waits, 1);

    Progress large;
    EXPECT_EQ(Test(Items(1200), large), 0);
    EXPECT_EQ(large.Waits, 3);
    // Calls of 500, 500 and 200 items, each ending at its share of the run.
    std::vector<long> ends;
    for (std::size_t i = 0; i < large.Percents.size(); ++i) {
        if (i > 0) {
            EXPECT_GE(large.Percents[i], large.Percents[i - 1]);
        }
    }
    EXPECT_EQ(large.Percents.size(), 1200u + 3u);
    EXPECT_EQ(large.Percents[500], 42);
    EXPECT_EQ(large.Percents[1001], 83);
    EXPECT_EQ(large.Percents.back(), 100);
    // The front-end counts the items of a batched run itself.
    EXPECT_EQ(large.Texts[0], "El\xe9ment 1 sur un total de 1200");
}

TEST_F(UnzipCmdTest, AnErrorStopsTheRunAndRestoresThePointers) {
    Progress progress;
    EXPECT_EQ(Test(Items(1200, 500, 1000), progress), nvk::unzip::kUnzipNothingToDo);
    EXPECT_EQ(progress.Waits, 2);
}

TEST_F(UnzipCmdTest, ItemsAreRequiredAndQuotesKeptOnce) {
    Command empty(Archive(), s_Scratch->Path(), "   ");
    EXPECT_EQ(empty.dunzip(), 11);
    EXPECT_STREQ(EUnzipCmd::GetErrorMessage(11),
                 "Erreur lors de la d\xe9"
                 "compression !\nAucun fichier \xe0 extraire");
    EXPECT_STREQ(EUnzipCmd::GetErrorMessage(1), EUnzipCmd::GetErrorMessage(11));
    EXPECT_NE(std::string(EUnzipCmd::GetVerifyErrorMessage(39)).find("somme de contr"),
              std::string::npos);

    Command none(Archive(), s_Scratch->Path(), nullptr);
    EXPECT_EQ(none.dunzip(), 11);

    Command quoted(Archive(), *s_Scratch / "out", "\"with blank.txt\"");
    EXPECT_EQ(quoted.dunzip(), 0);
    EXPECT_EQ(Read(*s_Scratch / "out" / "with blank.txt"), "blank");
}

TEST_F(UnzipCmdTest, LoadsOnDemandAndAnswersMinusOneWithoutTheEntry) {
    Command count(Archive(), s_Scratch->Path());
    count.function = nvk::unzip::kCountAll;
    EXPECT_EQ(count.dunzip(), 0);
    EXPECT_EQ(count.returnCount, 1201);
    EXPECT_EQ(EUnzipCmd::g_hUnzipDll, nullptr);

    ASSERT_TRUE(EUnzipCmd::LoadLibraryA());
    nvk::os::HMODULE engine = EUnzipCmd::g_hUnzipDll;
    EXPECT_EQ(count.dunzip(), 0);
    EXPECT_EQ(EUnzipCmd::g_hUnzipDll, engine);
    EUnzipCmd::FreeLibrary();
    EXPECT_EQ(EUnzipCmd::g_hUnzipDll, nullptr);

    // A module that is not the engine, the OS layer's own: no "dunzip" entry.
    nvk::os::HMODULE other =
        nvk::os::ModuleFromAddress(reinterpret_cast<const void*>(&nvk::os::LoadLibraryA));
    ASSERT_NE(other, nullptr);
    EUnzipCmd::g_hUnzipDll = other;
    EXPECT_EQ(count.dunzip(), -1);
    EXPECT_EQ(EUnzipCmd::g_hUnzipDll, other);
    EUnzipCmd::g_hUnzipDll = nullptr;
    EXPECT_NE(std::string(EUnzipCmd::GetErrorMessage(-1)).find("dunzip32.dll"), std::string::npos);
}

TEST_F(UnzipCmdTest, GivesTheEngineItsTexts) {
    EUnzipCmd command;
    EXPECT_EQ(command.unzipStructSize, kUnzipCmdStructSize);
    char buffer[300];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(command.DisplayMessage(13, 0, 71, 0, buffer, nullptr), 1);
    EXPECT_STREQ(buffer, "El\xe9ment %d sur un total de %d");
    EXPECT_EQ(command.DisplayMessage(13, 0, 143, 0, buffer, nullptr), 1);
    EXPECT_STREQ(buffer, "\\DUNZLOG.TXT");
    EXPECT_EQ(command.DisplayMessage(13, 0, 72, 0, buffer, nullptr), 1);
    EXPECT_STREQ(buffer, "Extraction de: %s");
    EXPECT_EQ(command.DisplayMessage(13, 0, 148, 0, buffer, nullptr), 0);
    EXPECT_EQ(command.DisplayMessage(12, 0, 72, 0, buffer, nullptr), 0);
    EXPECT_EQ(command.DisplayMessage(13, 0, 150, 0, buffer, nullptr), 0);
}

}  // namespace
