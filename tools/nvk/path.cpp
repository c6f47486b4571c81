// nvk path: file names and paths, the drive map, and the special folders.
#include <iostream>
#include <string>

#include "cli.h"
#include "native_path.h"
#include "nvk/core/chaine.h"
#include "os/api/path_map.h"

namespace nvk::tool {
namespace {

int Split(const Args& args);
int Join(const Args& args);
int Combine(const Args& args);
int Normalize(const Args& args);
int ValidName(const Args& args);
int Native(const Args& args);
int Windows(const Args& args);
int Special(const Args& args);

const Command kCommands[] = {
    {"split", "PATH | -", "prints the root, folder, name and extension, one a line", Split,
     "answers: four lines (root, folder, name, extension); with -, one line a path, the four\n"
     "parts separated by tabs."},
    {"join", "A B", "joins two paths with one separator", Join},
    {"combine", "A B", "A / B: B taken from A, then normalised", Combine},
    {"normalize", "PATH | -", "resolves \".\" and \"..\"", Normalize},
    {"valid-name", "TEXT | - [--devices]", "makes a valid file name of TEXT", ValidName},
    {"native", "PATH | -", "the POSIX path of a Windows path", Native,
     "answers: the POSIX path (exit 0), or an empty line (exit 1) for a path on no mapped drive."},
    {"windows", "POSIXPATH | -", "the drive form of a POSIX path", Windows,
     "answers: the drive form (exit 0), or an empty line (exit 1) for a path under no drive."},
    {"special", "CSIDL", "the folder of a shell special-folder number", Special},
};

// Runs `answer` on the one argument, or with "-" on each line of standard
// input, whole, since paths hold blanks.
int PerLine(const Args& args, const Command& command, int (*answer)(const Args& text)) {
    if (!Expect(args, 1, 1, command)) {
        return kFailure;
    }
    return PerInput(args, answer, LineAs::WholeText);
}

// One line a part; with "-", the four parts of a path on one line, separated
// by tabs.
int Split(const Args& args) {
    return PerLine(args, kCommands[0], [](const Args& text) {
        const Chaine path(text[0].c_str());
        const char separator = ReadingInput() ? '\t' : '\n';
        std::cout << path.GetRoot().c_str() << separator << path.GetFolder().c_str() << separator
                  << path.GetFileName().c_str() << separator << path.GetExtension().c_str() << '\n';
        return kOk;
    });
}

int Join(const Args& args) {
    if (!Expect(args, 2, 2, kCommands[1])) {
        return kFailure;
    }
    std::cout << PathJoin(args[0].c_str(), args[1].c_str()).c_str() << '\n';
    return kOk;
}

int Combine(const Args& args) {
    if (!Expect(args, 2, 2, kCommands[2])) {
        return kFailure;
    }
    std::cout << (Chaine(args[0].c_str()) / args[1].c_str()).c_str() << '\n';
    return kOk;
}

int Normalize(const Args& args) {
    return PerLine(args, kCommands[3], [](const Args& text) {
        Chaine path(text[0].c_str());
        std::cout << path.NormalizePath().c_str() << '\n';
        return kOk;
    });
}

int PrintValidName(const Args& text, bool devices) {
    Chaine name(text[0].c_str());
    std::cout << name.MakeValidFileName(devices).c_str() << '\n';
    return kOk;
}

int ValidName(const Args& args) {
    Args rest = args;
    if (TakeFlag(rest, "--devices")) {
        return PerLine(rest, kCommands[4],
                       [](const Args& text) { return PrintValidName(text, true); });
    }
    return PerLine(rest, kCommands[4],
                   [](const Args& text) { return PrintValidName(text, false); });
}

int Native(const Args& args) {
    return PerLine(args, kCommands[5], [](const Args& text) {
        std::string native = os::ToNativePath(text[0].c_str());
        if (native.empty()) {
            std::cout << '\n';
            std::cerr << "nvk: on no mapped drive or share: " << text[0] << '\n';
            return kNegative;
        }
        std::cout << AnsiFromNative(native) << '\n';
        return kOk;
    });
}

int Windows(const Args& args) {
    return PerLine(args, kCommands[6], [](const Args& text) {
        std::string windows = os::ToWindowsPath(NativeFromAnsi(text[0]).c_str());
        if (windows.empty()) {
            std::cout << '\n';
            std::cerr << "nvk: under no mapped drive: " << text[0] << '\n';
            return kNegative;
        }
        std::cout << windows << '\n';
        return kOk;
    });
}

int Special(const Args& args) {
    long long csidl = 0;
    if (!Expect(args, 1, 1, kCommands[7])) {
        return kFailure;
    }
    if (!ParseLong(args[0], csidl) || csidl < 0 || csidl > 0xFFFF) {
        return Fail("not a CSIDL number: " + args[0]);
    }
    Chaine folder;
    folder.GetSpecialFolder(static_cast<int>(csidl));
    if (folder.IsEmpty()) {
        std::cerr << "nvk: no folder for CSIDL " << csidl << '\n';
        return kNegative;
    }
    std::cout << folder.c_str() << '\n';
    return kOk;
}

void Demo(std::ostream& out) {
    const Chaine path("C:\\Dossiers\\Dupont SA\\..\\Martin\\compta.2024.dat");
    out << "  " << path.c_str() << ": folder \"" << path.GetFolder().c_str() << "\", name \""
        << path.GetFileName().c_str() << "\", extension \"" << path.GetExtension().c_str()
        << "\"\n";
    Chaine normal(path);
    out << "  normalised: " << normal.NormalizePath().c_str() << '\n';
    Chaine name("Dupont & fils: \"bilan\" 2024?");
    out << "  a valid file name of \"" << name.c_str() << "\": ";
    out << name.MakeValidFileName(true).c_str() << ", and of \"com1\": ";
    Chaine device("com1");
    out << device.MakeValidFileName(true).c_str() << '\n';
    out << "  C:\\Dossiers lies at " << AnsiFromNative(os::ToNativePath("C:\\Dossiers"))
        << ", and /etc is " << os::ToWindowsPath("/etc") << '\n';
    Chaine documents;
    out << "  documents (CSIDL 5): " << documents.GetDocumentsFolder().c_str() << '\n';
}

const RegisterArea kArea({"path", "file names, paths, the drive map and special folders", kCommands,
                          Demo, 15});

}  // namespace
}  // namespace nvk::tool
