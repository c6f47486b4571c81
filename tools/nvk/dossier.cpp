// nvk dossier zip: one archive of a dossier through EZipFolder, EZipCmd and
// the engine.
#include <algorithm>
#include <string>

#include "cli.h"
#include "nvk/archive/zip_cmd.h"
#include "nvk/archive/zip_folder.h"
#include "os/api/directory.h"
#include "progress.h"

namespace nvk::tool {
namespace {

int DossierZip(const Args& args);

const Command kDossierCommands[] = {
    {"zip",
     "MAINFILE ARCHIVE --name RAISSOC --app SHORTNAME --key KEY [--exercice N] [--demo] "
     "[--description TEXT]",
     "archives the dossier of MAINFILE: its main file, infos.btr and *.nvk beside it, and the "
     "data folder SHORTNAME.N (the highest one without --exercice), below Dossiers/<folder>/, "
     "with the information file _NVK_.lst",
     DossierZip, "answers: nothing when it worked; exit 0, or 2 with the reason."},
};

// Draws the engine's overall progress on the terminal.
class ShownZipFolder : public EZipFolder {
protected:
    bool OnMajorStatus(char* text, long percent) override {
        DrawPercentBar(text, std::clamp(percent, 0L, 100L));
        return false;
    }
};

int FailWith(int result, EZipFolder const& folder) {
    switch (result) {
        case -1:
            if (folder.Check() == EZipFolder::CheckNoShortName) {
                return Fail("the application's short name is empty");
            }
            break;
        case -2:
            return Fail("the company name is empty");
        case -3:
            return Fail("the main file does not exist");
        case -4:
            return Fail("the dossier key is zero");
        case -6:
            return Fail("the dossier has no data folder");
        case -7:
            return Fail("the dossier has nothing to archive");
        default:
            break;
    }
    std::string text = EZipCmd::GetErrorMessage(result);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return Fail(text);
}

std::string FullPath(const std::string& path) {
    char full[os::MAX_PATH] = {};
    os::DWORD size = os::GetFullPathNameA(path.c_str(), sizeof(full), full, nullptr);
    return size > 0 && size < sizeof(full) ? std::string(full) : path;
}

int DossierZip(const Args& arguments) {
    Args args = arguments;
    const std::string name = TakeOption(args, "--name");
    const std::string app = TakeOption(args, "--app");
    const std::string key = TakeOption(args, "--key");
    const std::string exercice = TakeOption(args, "--exercice", "-1");
    const bool demo = TakeFlag(args, "--demo");
    const std::string description = TakeOption(args, "--description");
    if (!Expect(args, 2, 2, kDossierCommands[0])) {
        return kFailure;
    }
    long long number = 0;
    if (!ParseLong(exercice, number) || number < -1 || number > 999999) {
        return Fail("--exercice takes the number of an exercise");
    }
    CNVKKey dossierKey(key.c_str());
    if (static_cast<std::uint64_t>(dossierKey) == 0) {
        return Fail("--key takes a key of 16 hexadecimal digits");
    }
    ShownZipFolder folder;
    folder.SetMainFile(FullPath(args[0]).c_str());
    folder.SetRaisSoc(name.c_str());
    folder.SetShortName(app.c_str());
    folder.SetNVKKey(dossierKey);
    folder.SetExercice(static_cast<int>(number));
    folder.SetIsDemo(demo);
    const bool bar = ErrorOnTerminal();
    // Off a terminal the plain object, whose progress draws nothing.
    EZipFolder plain(folder);
    EZipFolder& zip = bar ? folder : plain;
    const int result = zip.Zip(args[1].c_str(), description.c_str());
    if (bar) {
        EndPercentBar();
    }
    return result == 0 ? kOk : FailWith(result, folder);
}

const RegisterArea kDossierArea({"dossier", "archives a company's dossier", kDossierCommands,
                                 nullptr, 86});

}  // namespace
}  // namespace nvk::tool
