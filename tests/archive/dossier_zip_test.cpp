// EZipFolder: which files of a dossier go into its archive, under which
// names, with which information file, and its results.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "nvk/archive/zip_cmd.h"
#include "nvk/archive/zip_folder.h"
#include "nvk/services/global_dico.h"
#include "os/api/module.h"
#include "os/api/path_map.h"
#include "os/api/temp_file.h"
#include "zip_test_support.h"

namespace {

using nvk::ziptest::Python;
using nvk::ziptest::Scratch;
using nvk::ziptest::Shell;

constexpr std::uint64_t kKey = 0x0807060504030201ULL;

// Paths as the applications have them, in drive form.
Chaine Windows(std::string const& path) {
    return nvk::os::ToWindowsPath(path.c_str()).c_str();
}

// A dossier "Soc" with its main file, satellites, and exercises 2011 and
// 2012 of the application COMPTA.
struct Dossier {
    Dossier() {
        scratch.Put("Soc/main.dat", "main");
        scratch.Put("Soc/infos.btr", "infos");
        scratch.Put("Soc/param.nvk", "param");
        scratch.Put("Soc/notes.txt", "not archived");
        scratch.Put("Soc/COMPTA.2011/old.dat", "2011");
        scratch.Put("Soc/COMPTA.2012/ecr.dat", "2012");
        scratch.Put("Soc/COMPTA.2012/sub/lettrage.dat", "2012");
        scratch.Put("Soc/COMPTA.2012/ecr.lck", "lock");
        scratch.Put("Soc/COMPTA.2012/old.BAK", "backup");
        folder.SetMainFile(Windows(scratch / "Soc/main.dat"));
        folder.SetRaisSoc("  Soci\xE9t\xE9 ");
        folder.SetShortName(" COMPTA");
        folder.SetNVKKey(kKey);
    }
    std::string Archive() const { return scratch / "out.zip"; }
    std::string Information() const { return Shell("unzip -p '" + Archive() + "' _NVK_.lst").text; }

    Scratch scratch;
    EZipFolder folder;
};

TEST(DossierZip, ArchivesTheMainFilesAndTheLatestExerciseUnderDossiers) {
    Dossier dossier;
    ASSERT_EQ(dossier.folder.Zip(dossier.Archive().c_str(), ""), 0);
    std::string archive = dossier.Archive();
    std::string names =
        "['Dossiers/Soc/COMPTA.2012/ecr.dat', 'Dossiers/Soc/COMPTA.2012/sub/lettrage.dat', "
        "'Dossiers/Soc/infos.btr', 'Dossiers/Soc/main.dat', 'Dossiers/Soc/param.nvk', "
        "'_NVK_.lst']\n";
    EXPECT_EQ(Python(archive, "sorted(z.namelist())").text, names);
    EXPECT_EQ(Shell("unzip -t '" + archive + "'").status, 0);
    EXPECT_EQ(Shell("7zz t '" + archive + "'").status, 0);
    for (std::string lister : {"zipinfo -1", "bsdtar -tf"}) {
        auto listing = Shell(lister + " '" + archive + "'");
        EXPECT_NE(listing.text.find("_NVK_.lst\n"), std::string::npos) << lister;
        EXPECT_NE(listing.text.find("Dossiers/Soc/COMPTA.2012/sub/lettrage.dat\n"),
                  std::string::npos)
            << lister;
    }
    EXPECT_EQ(
        dossier.Information(),
        "[Folder:Soci\xE9t\xE9]\r\nType=1\r\nKey=0102030405060708\r\nApp=COMPTA\r\nDemo=0\r\n"
        "Exercice=2012\r\nName=Soci\xE9t\xE9\r\nDescription=Soci\xE9t\xE9 / -1\r\n"
        "MainFile=Dossiers/Soc/main.dat\r\n"
        "#Dossiers/Soc/COMPTA.2012/ecr.dat=$(FOLDER)\\COMPTA.2012\\ecr.dat\r\n"
        "#Dossiers/Soc/COMPTA.2012/sub/lettrage.dat=$(FOLDER)\\COMPTA.2012\\sub\\lettrage.dat\r\n"
        "#Dossiers/Soc/infos.btr=$(FOLDER)\\infos.btr\r\n"
        "#Dossiers/Soc/main.dat=$(FOLDER)\\main.dat\r\n"
        "#Dossiers/Soc/param.nvk=$(FOLDER)\\param.nvk\r\n");
}

TEST(DossierZip, TakesTheExerciseAskedForAndRefusesAMissingDataFolder) {
    Dossier dossier;
    dossier.scratch.Put("Soc/COMPTA.2013/new.dat", "2013");
    dossier.folder.SetExercice(2011);
    dossier.folder.SetIsDemo(true);
    ASSERT_EQ(dossier.folder.Zip(dossier.Archive().c_str(), "Bilan"), 0);
    std::string information = dossier.Information();
    EXPECT_NE(information.find("Demo=1\r\nExercice=2011\r\n"), std::string::npos) << information;
    EXPECT_NE(information.find("Description=Bilan\r\n"), std::string::npos);
    EXPECT_NE(information.find("#Dossiers/Soc/COMPTA.2011/old.dat="), std::string::npos);

    dossier.folder.SetExercice(2010);
    EXPECT_EQ(dossier.folder.Zip(dossier.Archive().c_str(), ""), -6);
    // The highest entry is a file: no data folder, whatever lies below it.
    dossier.scratch.Put("Soc/COMPTA.2014", "a file");
    dossier.folder.SetExercice(-1);
    EXPECT_EQ(dossier.folder.Zip(dossier.Archive().c_str(), ""), -6);
    dossier.folder.SetShortName("GESTION");
    EXPECT_EQ(dossier.folder.Zip(dossier.Archive().c_str(), ""), -6);
}

TEST(DossierZip, AnExcludedMainFileLeavesTheInformationFileAsMainFile) {
    Dossier dossier;
    std::filesystem::remove_all(dossier.scratch / "Soc");
    dossier.scratch.Put("Soc/main.bak", "main");
    std::filesystem::create_directories(dossier.scratch / "Soc/COMPTA.1");
    dossier.folder.SetMainFile(Windows(dossier.scratch / "Soc/main.bak"));
    EXPECT_EQ(dossier.folder.Zip(dossier.Archive().c_str(), ""), -7);
    dossier.scratch.Put("Soc/COMPTA.1/x.dat", "x");
    ASSERT_EQ(dossier.folder.Zip(dossier.Archive().c_str(), ""), 0);
    std::string information = dossier.Information();
    EXPECT_NE(information.find("Exercice=1\r\n"), std::string::npos) << information;
    EXPECT_NE(information.find("MainFile=_NVK_.lst\r\n"), std::string::npos) << information;
}

TEST(DossierZip, RefusesIncompletePropertiesInTheirOrder) {
    nvk::ziptest::Scratch scratch;
    GlobalDico::Get().SetValue(DicoKeys::AppShortName, "GESTION");
    EZipFolder folder;
    GlobalDico::Get().RemoveValue(DicoKeys::AppShortName);
    EXPECT_EQ(std::string(folder.ShortName()), "GESTION");
    folder.SetShortName("");
    EXPECT_EQ(folder.Zip("x.zip", ""), -1);
    folder.SetShortName("COMPTA");
    EXPECT_EQ(folder.Zip("x.zip", ""), -2);
    folder.SetRaisSoc("Soc");
    EXPECT_EQ(folder.Zip("x.zip", ""), -3);
    folder.SetMainFile(Windows(scratch / "none.dat"));
    EXPECT_EQ(folder.Check(), EZipFolder::CheckBadMainFile);
    folder.SetMainFile(
        Windows(scratch.Put("main.dat", "[General]\r\nNVKKey=0102030405060708\r\n")));
    // The dossier's own key is not taken: the caller sets it.
    EXPECT_EQ(folder.Zip("x.zip", ""), -4);
    folder.SetNVKKey(kKey);
    EXPECT_TRUE(folder.IsValid());
    folder.Clear();
    EXPECT_EQ(std::string(folder.ShortName()), "COMPTA");
    EXPECT_TRUE(std::string(folder.RaisSoc()).empty());
}

// Counts the engine's progress reports.
class Counting : public EZipFolder {
public:
    int major = 0;
    int minor = 0;

protected:
    bool OnMajorStatus(char*, long) override { return ++major, false; }
    bool OnMinorStatus(char*, long) override { return ++minor, false; }
};

TEST(DossierZip, ReportsProgressAndLeavesItsTemporaryFile) {
    Dossier dossier;
    Counting counting;
    static_cast<EZipFolder&>(counting) = dossier.folder;
    // A name of this test's own: other tests leave their information files in
    // the same temporary folder meanwhile.
    const std::string society = std::filesystem::path(dossier.scratch.str()).filename().string();
    counting.SetRaisSoc(society.c_str());
    Chaine temp;
    std::string folder = nvk::os::ToNativePath(temp.GetTempFolder());
    auto informationFiles = [&] {
        std::set<std::string> found;
        for (auto const& entry : std::filesystem::directory_iterator(folder)) {
            std::string name = entry.path().filename().string();
            std::ifstream file(entry.path());
            std::string first;
            std::getline(file, first);
            if (name.starts_with("TMP") && first.starts_with("[Folder:" + society + "]")) {
                found.insert(name);
            }
        }
        return found;
    };
    std::set<std::string> before = informationFiles();
    ASSERT_EQ(counting.Zip(dossier.Archive().c_str(), ""), 0);
    EXPECT_GT(counting.major, 0);
    EXPECT_GT(counting.minor, 0);
    // The information file's temporary file stays where it was written.
    EXPECT_EQ(informationFiles().size(), before.size() + 1);

    // An engine that cannot run gives -1 although the properties are good.
    nvk::os::HMODULE other =
        nvk::os::ModuleFromAddress(reinterpret_cast<void const*>(&nvk::os::GetTempPathA));
    EZipCmd::g_hZipDll = other;
    EXPECT_EQ(counting.Zip(dossier.Archive().c_str(), ""), -1);
    EXPECT_EQ(counting.Check(), EZipFolder::CheckOK);
    EZipCmd::g_hZipDll = nullptr;
}

}  // namespace

namespace {

TEST(DossierZip, TheToolArchivesADossierNamedByItsMainFile) {
    Dossier dossier;
    auto self = std::filesystem::read_symlink("/proc/self/exe");
    std::string nvk = (self.parent_path().parent_path() / "tools/nvk/nvk").string();
    std::string command = "cd '" + dossier.scratch.str() + "' && '" + nvk +
                          "' dossier zip Soc/main.dat out.zip --name Soc --app COMPTA ";
    auto made = Shell(command + "--key 0102030405060708 --exercice 2011 --demo");
    EXPECT_EQ(made.status, 0) << made.text;
    EXPECT_EQ(Python(dossier.Archive(), "sorted(z.namelist())").text,
              "['Dossiers/Soc/COMPTA.2011/old.dat', 'Dossiers/Soc/infos.btr', "
              "'Dossiers/Soc/main.dat', 'Dossiers/Soc/param.nvk', '_NVK_.lst']\n");
    EXPECT_EQ(Shell(command + "--key 01020304050607").status, 2);
    auto missing = Shell(command + "--key 0102030405060708 --exercice 1999");
    EXPECT_EQ(missing.text, "nvk: the dossier has no data folder\n");
    EXPECT_EQ(missing.status, 2);
}

}  // namespace
