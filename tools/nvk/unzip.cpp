// nvk unzip ARCHIVE: lists, tests and extracts through EUnzipCmd and the
// engine it loads, with the front-end's messages.
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/archive/unzip_cmd.h"
#include "nvk/archive/unzip_engine.h"
#include "progress.h"

namespace nvk::tool {
namespace {

int Unzip(const Args& args);

const Command kUnzipCommands[] = {
    {"unzip", "ARCHIVE [-d DIR] [ITEM...] [--test] [--list] [--password P] [--overwrite]",
     "extracts the archive's members (all, or the ITEMs, which may use * and ?) into DIR (the "
     "current folder by default); --list lists them, --test checks them",
     Unzip,
     "answers: nothing when it worked, or one line a member with --list (size, date, time,\n"
     "name); exit 0, or 2 with the front-end's message when the archive is refused."},
};

// The front-end's text of a code, on one line.
int FailWith(int code, bool verify) {
    std::string text =
        verify ? EUnzipCmd::GetVerifyErrorMessage(code) : EUnzipCmd::GetErrorMessage(code);
    for (char& c : text) {
        if (c == '\n') {
            c = ' ';
        }
    }
    return Fail(text);
}

// The front-end's progress, as a bar on the terminal.
int DrawProgress(char* text, long percent, void*) {
    DrawPercentBar(text, static_cast<long>(std::min<long>(percent, 100)));
    return 0;
}

int List(EUnzipCmd& command) {
    // Functions that don't work on items would run again for each batch.
    command.lpszFilespec = nullptr;
    command.function = nvk::unzip::kCountAll;
    int code = command.dunzip();
    if (code != 0) {
        return FailWith(code, false);
    }
    const int count = command.returnCount;
    nvk::unzip::UnzipMemberInfo info{};
    command.zInfo = &info;
    command.function = nvk::unzip::kIndexedInfo;
    for (int i = 0; i < count; ++i) {
        command.index = i;
        if ((code = command.dunzip()) != 0) {
            return FailWith(code, false);
        }
        char line[64];
        std::snprintf(line, sizeof line, "%12llu  %04u-%02u-%02u %02u:%02u  ",
                      static_cast<unsigned long long>(info.uncompressedSize),
                      1980 + (info.dosDate >> 9), (info.dosDate >> 5) & 15, info.dosDate & 31,
                      info.dosTime >> 11, (info.dosTime >> 5) & 63);
        std::cout << line << info.szFileName << '\n';
    }
    return kOk;
}

int Unzip(const Args& arguments) {
    Args args = arguments;
    const std::string destination = TakeOption(args, "-d", ".");
    const bool hasPassword = std::find(args.begin(), args.end(), "--password") != args.end();
    const std::string password = TakeOption(args, "--password");
    const bool test = TakeFlag(args, "--test");
    const bool list = TakeFlag(args, "--list");
    const bool overwrite = TakeFlag(args, "--overwrite");
    if (!Expect(args, 1, 100000, kUnzipCommands[0])) {
        return kFailure;
    }
    std::string items;
    for (std::size_t i = 1; i < args.size(); ++i) {
        items += (items.empty() ? "\"" : " \"") + args[i] + '"';
    }
    if (items.empty()) {
        items = "\"*\"";
    }
    // Paths go to the file system as typed; member names and the password are
    // the library's text.
    EUnzipCmd command(args[0].c_str(), destination.c_str(), items.c_str());
    command.decryptFlag = hasPassword ? 1 : 0;
    command.lpszDecryptCode = const_cast<char*>(password.c_str());
    command.overWriteFlag = overwrite ? 1 : 0;
    if (list) {
        return List(command);
    }
    const bool bar = ErrorOnTerminal();
    if (bar) {
        command.lpMajorStatus = DrawProgress;
    }
    command.function = test ? nvk::unzip::kTestNamed : nvk::unzip::kExtract;
    const int code = command.dunzip();
    if (bar) {
        EndPercentBar();
    }
    return code == 0 ? kOk : FailWith(code, test);
}

const RegisterArea kUnzipArea({"unzip", "extracts, tests and lists zip archives", kUnzipCommands,
                               nullptr, 85});

}  // namespace
}  // namespace nvk::tool
