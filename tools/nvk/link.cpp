// nvk link: shell links, made, resolved and deleted as the applications do.
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/afx/cstring.h"
#include "nvk/platform/link.h"
#include "os/api/file_attributes.h"

namespace nvk::tool {
namespace {

int Create(const Args& args);
int Resolve(const Args& args);
int Delete(const Args& args);

const Command kCommands[] = {
    {"create", "TARGET LINK [--args A] [--description D] [--icon PATH[,INDEX]]",
     "writes a link file to TARGET", Create,
     "The file is in Windows' link format wherever it is written; in the user's desktop or\n"
     "applications folder a desktop entry goes beside it. A target that is the link itself\n"
     "is refused (exit 2)."},
    {"resolve", "LINK", "prints the target of a link file, desktop entry or symbolic link", Resolve,
     "answers: the target's long name (exit 0); a target that is missing or is the link\n"
     "itself is a negative answer (exit 1); a missing or unreadable link fails (exit 2)."},
    {"delete", "LINK", "removes a link file and what was made beside it", Delete},
};

int Create(const Args& given) {
    Args args = given;
    const std::string arguments = TakeOption(args, "--args");
    const std::string description = TakeOption(args, "--description");
    // Paths are bytes, as the file system has them; texts are converted.
    std::string icon = TakeOption(args, "--icon");
    if (!Expect(args, 2, 2, kCommands[0])) {
        return kFailure;
    }
    long long index = 0;
    const std::size_t comma = icon.rfind(',');
    if (comma != std::string::npos && ParseLong(icon.substr(comma + 1), index)) {
        if (index < -0x80000000LL || index > 0x7FFFFFFF) {
            return Fail("an icon index is a 32-bit number");
        }
        icon.resize(comma);
    }
    CLink maker;
    if (!maker.Create(args[0].c_str(), args[1].c_str(), arguments.c_str(), description.c_str(),
                      icon.c_str(), static_cast<int>(index))) {
        return Fail(maker.GetResult() < 0 ? "the link object could not be made"
                                          : "the target is the link itself");
    }
    if (maker.GetResult() < 0) {
        return Fail("can't write " + args[1]);
    }
    return kOk;
}

int Resolve(const Args& args) {
    if (!Expect(args, 1, 1, kCommands[1])) {
        return kFailure;
    }
    const std::string& link = args[0];
    if (os::GetFileAttributesA(link.c_str()) == os::INVALID_FILE_ATTRIBUTES) {
        return Fail("no link " + args[0]);
    }
    CLink resolver;
    CString target;
    if (resolver.ResolveIt(link.c_str(), target, 0) != 0) {
        std::cout << target.GetString() << '\n';
        return kOk;
    }
    if (resolver.GetResult() < 0 || target.IsEmpty()) {
        return Fail("can't read the link " + args[0]);
    }
    std::cerr << "nvk: the target " << target.GetString() << " is missing or is the link itself\n";
    return kNegative;
}

int Delete(const Args& args) {
    if (!Expect(args, 1, 1, kCommands[2])) {
        return kFailure;
    }
    CLink remover;
    if (remover.DeleteLink(args[0].c_str()) == 0) {
        return Fail("can't read or remove the link " + args[0]);
    }
    return kOk;
}

const RegisterArea kArea({"link", "shell links, on Windows and on the Linux desktop", kCommands,
                          nullptr, 120});

}  // namespace
}  // namespace nvk::tool
