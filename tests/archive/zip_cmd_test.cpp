// The zip front-end: its record's defaults, its texts, and the loading of
// the engine around a command.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "nvk/archive/zip_cmd.h"
#include "nvk/context/string_load.h"
#include "os/api/keyboard.h"
#include "os/api/module.h"
#include "os/api/temp_file.h"
#include "zip_test_support.h"

namespace {

using nvk::ziptest::Scratch;

std::string StringResource(unsigned id) {
    Chaine text;
    nvk::LoadString(text, id, nvk::LibraryModule());
    return text.c_str();
}

nvk::os::SHORT ControlDown(int key) {
    return key == nvk::os::VK_CONTROL ? static_cast<nvk::os::SHORT>(0x8000) : 0;
}

TEST(ZipCmd, ConstructorsGiveTheDefaultsAndOwnTheirTexts) {
    char temp[262] = {};
    nvk::os::GetTempPathA(261, temp);
    EZipCmd plain;
    EXPECT_EQ(plain.zipStructSize, static_cast<int>(sizeof(ZIPCMDSTRUCT)));
    EXPECT_EQ(plain.function, 0);
    EXPECT_EQ(plain.pathForTempFlag, 1);
    EXPECT_STREQ(plain.lpszTempPath, temp);
    EXPECT_EQ(plain.lpMessageDisplayData, &plain);
    EXPECT_EQ(plain.lpszZIPFile, nullptr);

    std::string archive = "C:\\a.zip";
    EZipCmd add(archive.c_str(), "\"x y\"");
    archive[0] = 'D';
    EXPECT_EQ(add.function, ZIP_ADD);
    EXPECT_STREQ(add.lpszZIPFile, "C:\\a.zip");
    EXPECT_STREQ(add.lpszItemList, "\"x y\"");
    EXPECT_EQ(add.compFactor, 9);
    EXPECT_EQ(add.quietFlag, 1);
    EXPECT_EQ(add.wZipSubOptions, 1);
    EXPECT_EQ(add.encryptFlag, 0);
    EXPECT_NE(add.lpszTempPath, plain.lpszTempPath);

    // Copies share the texts and point into the source's temporary path.
    EZipCmd copy(add);
    EXPECT_EQ(copy.lpszZIPFile, add.lpszZIPFile);
    EXPECT_EQ(copy.lpszTempPath, add.lpszTempPath);
    copy.CommonConstruct();  // lets go of the shared texts before both die

    // Holding the control key while the command is built asks for encryption.
    auto previous = nvk::os::SetKeyStateHook(ControlDown);
    EZipCmd secret("a.zip", "b");
    nvk::os::SetKeyStateHook(previous);
    EXPECT_EQ(secret.encryptFlag, 1);
}

TEST(ZipCmd, DisplayMessageGivesResourcesAndLiteralsOfTheEngine) {
    EZipCmd command;
    char buffer[300];
    auto ask = [&](unsigned kind, int id) {
        std::memset(buffer, 'x', sizeof(buffer));
        return command.DisplayMessage(kind, 0, id, 0, buffer, nullptr);
    };
    EXPECT_EQ(ask(13, 101), 1);
    EXPECT_EQ(buffer, StringResource(14822));
    EXPECT_EQ(buffer[259], '\0');
    EXPECT_EQ(ask(13, 391), 1);
    EXPECT_EQ(buffer, StringResource(14955));
    EXPECT_EQ(ask(13, 277), 1);
    EXPECT_EQ(buffer, StringResource(14821));
    EXPECT_EQ(ask(13, 256), 1);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(ask(13, 700), 1);
    EXPECT_EQ(buffer, StringResource(14979));
    EXPECT_EQ(ask(13, 160), 1);
    EXPECT_STREQ(buffer, "R\xE9ponse ZIP:");
    EXPECT_EQ(ask(13, 238), 1);
    EXPECT_STREQ(buffer, "lMemBlockSize: %ld \r\n");
    EXPECT_EQ(ask(13, 701), 1);
    EXPECT_STREQ(buffer, "\\DZIPLOG.TXT");
    EXPECT_EQ(ask(13, 707), 1);
    EXPECT_STREQ(buffer, "%s [Memory to Memory]");
    // Ids of the range without a text, and other kinds, are left to the engine.
    for (int id : {100, 133, 161, 239, 303, 706, 708}) {
        EXPECT_EQ(ask(13, id), 0) << id;
    }
    EXPECT_EQ(ask(12, 101), 0);
}

TEST(ZipCmd, ErrorMessagesKeepTheLastTextForCodesWithoutOne) {
    std::string missing = EZipCmd::GetErrorMessage(-1);
    EXPECT_EQ(missing, StringResource(14800));
    EXPECT_NE(missing.find("dzip32.dll"), std::string::npos);
    EXPECT_EQ(std::string(EZipCmd::GetErrorMessage(0)), missing);
    EXPECT_EQ(std::string(EZipCmd::GetErrorMessage(22)), missing);
    EXPECT_EQ(std::string(EZipCmd::GetErrorMessage(12)), StringResource(14812));
    EXPECT_EQ(std::string(EZipCmd::GetErrorMessage(-2)), StringResource(14812));
}

TEST(ZipCmd, TheEngineIsLoadedForOneCallUnlessLoadedBefore) {
    Scratch scratch;
    std::string file = scratch.Put("a.txt", "text");
    {
        EZipCmd command((scratch / "a.zip").c_str(), file.c_str());
        EXPECT_EQ(command.dzip(), 0);
        EXPECT_EQ(EZipCmd::g_hZipDll, nullptr);
    }
    ASSERT_TRUE(EZipCmd::LoadLibraryA());
    nvk::os::HMODULE loaded = EZipCmd::g_hZipDll;
    {
        EZipCmd command((scratch / "b.zip").c_str(), file.c_str());
        EXPECT_EQ(command.dzip(), 0);
        EXPECT_EQ(EZipCmd::g_hZipDll, loaded);
    }
    EZipCmd::FreeLibrary();
    EXPECT_EQ(EZipCmd::g_hZipDll, nullptr);

    // A multi-volume request runs without a temporary file; the caller's
    // flag is back afterwards.
    EZipCmd multi((scratch / "c.zip").c_str(), file.c_str());
    multi.wMultiVolControl = MV_USE_MULTI;
    EXPECT_EQ(multi.dzip(), ZE_MULTI_PARAMS);
    EXPECT_EQ(multi.pathForTempFlag, 1);
}

TEST(ZipCmd, AModuleWithoutTheEntryGivesMinusOneAndStaysLoaded) {
    // The OS layer's own module stands for a wrong "dzip32.dll".
    nvk::os::HMODULE other =
        nvk::os::ModuleFromAddress(reinterpret_cast<void const*>(&nvk::os::GetTempPathA));
    ASSERT_NE(other, nullptr);
    EZipCmd::g_hZipDll = other;
    EZipCmd command("a.zip", "b");
    EXPECT_EQ(command.dzip(), -1);
    EXPECT_EQ(EZipCmd::g_hZipDll, other);
    EZipCmd::g_hZipDll = nullptr;
}

}  // namespace
