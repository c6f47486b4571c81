// nvk version: the version and patch of an application, as the family shows
// them. "nvk version" alone is the tool's own version (see main).
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/services/app_version.h"
#include "os/api/file_attributes.h"

namespace nvk::tool {
namespace {

int Show(const Args& args);
int Patch(const Args& args);

const Command kCommands[] = {
    {"show", "FILE [--flags N] [--value]",
     "prints the version of FILE for display (also as nvk version FILE); --value prints its "
     "64-bit value as a.b.c.d",
     Show,
     "Flags add up: 1 the numbers major.minor (R release) unless the file is patched, 2 without "
     "the patch, 4 without the release, 8 the product's version rather than the file's. \"***\" "
     "(exit 1) for a missing file, \"Alpha\" for one without a version text; --value gives "
     "0.0.0.0 (exit 1) without a version resource."},
    {"patch", "FILE",
     "prints the patch of an executable and its date, from the side file FILE.ptc beside it", Patch,
     "\"none\" (exit 1) when there is no patch for this build."},
};

bool Exists(const std::string& file) {
    return nvk::os::GetFileAttributesA(file.c_str()) != nvk::os::INVALID_FILE_ATTRIBUTES;
}

int Show(const Args& given) {
    Args args = given;
    const std::string flagsText = TakeOption(args, "--flags", "0");
    const bool value = TakeFlag(args, "--value");
    long long flags = 0;
    if (!ParseLong(flagsText, flags) || flags < 0 || flags > 0xFFFFFFFF) {
        return Fail("not a number of flags: " + flagsText);
    }
    if (!Expect(args, 1, 1, kCommands[0])) {
        return kFailure;
    }
    if (value) {
        const std::uint64_t number =
            GetAppVersionValue(args[0].c_str(), static_cast<unsigned long>(flags));
        std::cout << (number >> 48) << '.' << ((number >> 32) & 0xFFFF) << '.'
                  << ((number >> 16) & 0xFFFF) << '.' << (number & 0xFFFF) << '\n';
        return number != 0 ? kOk : kNegative;
    }
    std::cout << GetAppVersion(args[0].c_str(), static_cast<unsigned long>(flags)).c_str() << '\n';
    return Exists(args[0]) ? kOk : kNegative;
}

int Patch(const Args& args) {
    if (!Expect(args, 1, 1, kCommands[1])) {
        return kFailure;
    }
    const PATCHVALUE patch = GetNVKAppPatchValue(args[0].c_str());
    if (patch.patch == 0) {
        std::cout << "none\n";
        return kNegative;
    }
    char date[16];
    std::snprintf(date, sizeof date, "%02d/%02d/%04d", patch.date.day, patch.date.month,
                  patch.date.year);
    std::cout << "patch " << static_cast<int>(patch.patch) << ' ' << date << '\n';
    return kOk;
}

void Demo(std::ostream& out) {
    out << "  this tool's own version resource reads " << GetThisAppVersion(0).c_str()
        << ", or with flags 1, " << GetThisAppVersion(1).c_str() << '\n';
}

const RegisterArea kArea({"version", "versions and patches of applications", kCommands, Demo, 60});

}  // namespace
}  // namespace nvk::tool
