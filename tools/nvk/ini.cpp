// nvk ini: INI files read and written under the writers' exclusion, for
// scripts that share configuration files with the applications.
#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "cli.h"
#include "nvk/config/ini_file.h"
#include "os/api/error.h"
#include "os/api/file_attributes.h"

namespace nvk::tool {
namespace {

namespace os = nvk::os;

int Get(const Args& args);
int Set(const Args& args);
int Incr(const Args& args);
int Sections(const Args& args);
int Dump(const Args& args);

const Command kCommands[] = {
    {"get", "FILE SECTION KEY [--default TEXT] [--timeout MS]",
     "prints a value without its surrounding quotes; 1 when it is missing and there is no default",
     Get},
    {"set", "FILE SECTION KEY VALUE [--timeout MS]",
     "writes a value; an empty VALUE removes the key, an empty KEY the section; 2 when the file "
     "could not be written, which then keeps its old text",
     Set},
    {"incr", "FILE SECTION KEY [--timeout MS]",
     "adds 1 to an integer while holding the file, and prints the new value; 2 when the file "
     "could not be written",
     Incr},
    {"sections", "FILE [--timeout MS]", "prints the section names in order", Sections},
    {"dump", "FILE [--timeout MS]", "prints the file as it is written back", Dump},
};

// Takes --timeout from the arguments and sets the process-wide time-out.
bool TakeTimeOut(Args& args) {
    const std::string text = TakeOption(args, "--timeout");
    if (text.empty()) {
        return true;
    }
    long long milliseconds = 0;
    if (!ParseLong(text, milliseconds) || milliseconds < 0 || milliseconds > 0x7FFFFFFF) {
        Fail("not a time-out in milliseconds: " + text);
        return false;
    }
    EIniFile::SetTimeOut(static_cast<int>(milliseconds));
    return true;
}

// Checks the options and the argument count of a command.
bool Prepare(Args& args, std::size_t count, const Command& command) {
    return TakeTimeOut(args) && Expect(args, count, count, command);
}

// Says why a file did not open, from the last error of the open.
int CannotOpen(const std::string& file) {
    const os::DWORD error = os::GetLastError();
    const os::DWORD attributes = os::GetFileAttributesA(file.c_str());
    if (attributes != os::INVALID_FILE_ATTRIBUTES &&
        (attributes & os::FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return Fail("cannot open " + file + ": it is a folder");
    }
    switch (error) {
        case os::ERROR_SHARING_VIOLATION:
        case os::ERROR_LOCK_VIOLATION:
            return Fail("cannot open " + file + ": held by another party past the time-out");
        case os::ERROR_PATH_NOT_FOUND:
            return Fail("cannot open " + file + ": its folder does not exist");
        case os::ERROR_ACCESS_DENIED:
            return Fail("cannot open " + file + ": access denied");
        default:
            return Fail("cannot open " + file + ": error " + std::to_string(error));
    }
}

int CannotWrite(const std::string& file) {
    return Fail("could not write " + file + " back; it keeps its old text");
}

// Text that the file would read back otherwise is refused: a line end cuts
// a line in two, an "=" in a name moves the rest into the value, and a name
// that begins with a blank, ';' or '[' reads as another name, a comment or
// a section.
bool Writable(const std::string& section, const std::string& key, const std::string& value) {
    if (section.find_first_of("\r\n") != std::string::npos) {
        Fail("a section name may not hold a line end");
        return false;
    }
    if (key.find_first_of("=\r\n") != std::string::npos) {
        Fail("a key name may not hold \"=\" or a line end");
        return false;
    }
    if (!key.empty() && (key[0] == ' ' || key[0] == ';' || key[0] == '[')) {
        Fail("a key name may not begin with a blank, \";\" or \"[\"");
        return false;
    }
    if (value.find_first_of("\r\n") != std::string::npos) {
        Fail("a value may not hold a line end");
        return false;
    }
    return true;
}

int Get(const Args& given) {
    Args args = given;
    const std::size_t before = args.size();
    const std::string fallback = TakeOption(args, "--default");
    const bool hasDefault = args.size() != before;
    if (!Prepare(args, 3, kCommands[0])) {
        return kFailure;
    }
    EIniFile ini;
    if (!ini.Open(args[0].c_str(), true)) {
        return CannotOpen(args[0]);
    }
    const Chaine section(args[1].c_str());
    const Chaine key(args[2].c_str());
    const EIniFile& view = ini;
    if (!view[section].Exist(key) && !hasDefault) {
        std::cerr << "nvk: no key " << args[2] << " in section " << args[1] << '\n';
        return kNegative;
    }
    const std::size_t size =
        std::max<std::size_t>(static_cast<std::size_t>(view[section][key].Length()),
                              fallback.size()) +
        1;
    std::vector<char> buffer(size);
    const unsigned int length =
        ini.GetPrivateProfileStringA(section, key, fallback.c_str(), buffer.data(), size, "");
    std::cout << std::string(buffer.data(), length) << '\n';
    return kOk;
}

int Set(const Args& given) {
    Args args = given;
    if (!Prepare(args, 4, kCommands[1]) || !Writable(args[1], args[2], args[3])) {
        return kFailure;
    }
    // Opened here rather than by the profile call, which reports success
    // whatever its Close does.
    EIniFile ini;
    if (!ini.Open(args[0].c_str(), false)) {
        return CannotOpen(args[0]);
    }
    ini.WritePrivateProfileStringA(args[1].c_str(), args[2].c_str(), args[3].c_str(), "");
    return ini.Close() ? kOk : CannotWrite(args[0]);
}

int Incr(const Args& given) {
    Args args = given;
    if (!Prepare(args, 3, kCommands[2]) || !Writable(args[1], args[2], "")) {
        return kFailure;
    }
    EIniFile ini;
    if (!ini.Open(args[0].c_str(), false)) {
        return CannotOpen(args[0]);
    }
    const Chaine section(args[1].c_str());
    const Chaine key(args[2].c_str());
    const std::string value = std::to_string(ini.GetPrivateProfileIntA(section, key, 0, "") + 1LL);
    ini.WritePrivateProfileStringA(section, key, value.c_str(), "");
    if (!ini.Close()) {
        return CannotWrite(args[0]);
    }
    std::cout << value << '\n';
    return kOk;
}

int Sections(const Args& given) {
    Args args = given;
    if (!Prepare(args, 1, kCommands[3])) {
        return kFailure;
    }
    EIniFile ini;
    if (!ini.Open(args[0].c_str(), true)) {
        return CannotOpen(args[0]);
    }
    const PTableau<Chaine> names = ini.GetSectionNames();
    for (int i = 0; i < names.Size(); ++i) {
        std::cout << names[i].c_str() << '\n';
    }
    return kOk;
}

int Dump(const Args& given) {
    Args args = given;
    if (!Prepare(args, 1, kCommands[4])) {
        return kFailure;
    }
    EIniFile ini;
    if (!ini.Open(args[0].c_str(), true)) {
        return CannotOpen(args[0]);
    }
    const Chaine text = ini.AsChaine();
    std::cout.write(text.c_str(), text.Length());
    return kOk;
}

void Demo(std::ostream& out) {
    EIniFile ini;
    ini.ReadInData(
        "; shared settings\n[Paths]\nData=\"D:\\Compta\"\n;lost\nmodels\n[paths]\nUser=ann\n");
    const EIniFile& view = ini;
    out << "  [Paths] and [paths] are one section, with " << view["PATHS"].GetNamedLinesNB()
        << " named lines; Data through operator[] is " << view["Paths"]["data"].c_str() << '\n';
    char buffer[32];
    ini.GetPrivateProfileStringA("Paths", "Data", "", buffer, sizeof buffer, "");
    out << "  and through GetPrivateProfileStringA, without its quotes: " << buffer << '\n';
    std::string text = ini.AsChaine().c_str();
    text.resize(text.size() - 2);
    for (std::string::size_type at; (at = text.find("\r\n")) != std::string::npos;) {
        text.replace(at, 2, " | ");
    }
    out << "  written back (the late comment is dropped, bare lines go last): " << text << '\n';
}

const RegisterArea kArea({"ini", "INI files, with one writer at a time across processes", kCommands,
                          Demo, 40});

}  // namespace
}  // namespace nvk::tool
