// nvk zip ARCHIVE FILE...: makes or changes an archive through EZipCmd and
// the engine it loads, with the front-end's messages.
#include <algorithm>
#include <cstdio>
#include <string>

#include "cli.h"
#include "nvk/archive/zip_cmd.h"
#include "progress.h"

namespace nvk::tool {
namespace {

int Zip(const Args& args);

const Command kZipCommands[] = {
    {"zip",
     "ARCHIVE FILE... [-r] [-0..-9] [--password P] [--comment TEXT] [--freshen|--update|--delete]",
     "adds the FILEs (which may use * and ?) to the archive, made if it is missing; -r goes into "
     "folders, -0 stores and -1 to -9 compress (9 by default), --password encrypts, --comment "
     "sets the archive's comment; --freshen replaces only entries whose file is newer, --update "
     "also adds new files, --delete removes the entries that the FILEs name",
     Zip, "answers: nothing when it worked; exit 0, or 2 with the front-end's message."},
};

// The front-end's text of a code, on one line.
int FailWith(int code) {
    std::string text = EZipCmd::GetErrorMessage(code);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return Fail(text);
}

// The front-end's progress, as a bar on the terminal.
int DrawProgress(char* text, unsigned long percent, void*) {
    DrawPercentBar(text, static_cast<long>(std::min<unsigned long>(percent, 100)));
    return 0;
}

int FunctionOf(Args& args) {
    int function = ZIP_ADD;
    int chosen = 0;
    for (auto [flag, value] :
         {std::pair{"--freshen", ZIP_FRESHEN}, std::pair{"--update", ZIP_UPDATE},
          std::pair{"--delete", ZIP_DELETE}}) {
        if (TakeFlag(args, flag)) {
            function = value;
            ++chosen;
        }
    }
    return chosen > 1 ? -1 : function;
}

int Zip(const Args& arguments) {
    Args args = arguments;
    const bool hasPassword = std::find(args.begin(), args.end(), "--password") != args.end();
    const std::string password = TakeOption(args, "--password");
    const bool hasComment = std::find(args.begin(), args.end(), "--comment") != args.end();
    const std::string comment = TakeOption(args, "--comment");
    const bool recurse = TakeFlag(args, "-r");
    int level = 9;
    for (char digit = '0'; digit <= '9'; ++digit) {
        if (TakeFlag(args, std::string("-") + digit)) {
            level = digit - '0';
        }
    }
    const int function = FunctionOf(args);
    if (function < 0) {
        return Fail("--freshen, --update and --delete exclude each other");
    }
    if (!Expect(args, 2, 100000, kZipCommands[0])) {
        return kFailure;
    }
    if (hasPassword && password.empty()) {
        return Fail("--password needs a password");
    }
    std::string items;
    for (std::size_t i = 1; i < args.size(); ++i) {
        items += (items.empty() ? "\"" : " \"") + args[i] + '"';
    }
    const std::string archive = args[0];
    EZipCmd command(archive.c_str(), items.c_str());
    command.function = function;
    command.recurseFlag = recurse ? 1 : 0;
    command.compFactor = level;
    command.encryptFlag = hasPassword ? 1 : 0;
    command.lpszEncryptCode = const_cast<char*>(password.c_str());
    command.addCommentFlag = hasComment ? 1 : 0;
    command.lpszComment = const_cast<char*>(comment.c_str());
    const bool bar = ErrorOnTerminal();
    if (bar) {
        command.lpMajorStatus = DrawProgress;
    }
    const int code = command.dzip();
    if (bar) {
        EndPercentBar();
    }
    return code == 0 ? kOk : FailWith(code);
}

const RegisterArea kZipArea({"zip", "makes and changes zip archives", kZipCommands, nullptr, 84});

}  // namespace
}  // namespace nvk::tool
