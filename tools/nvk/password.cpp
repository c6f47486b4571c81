// nvk password: scrambling a password into its 32-byte stored form.
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/afx/cstring.h"
#include "nvk/platform/crypt_password.h"

namespace nvk::tool {
namespace {

int Scramble(const Args& args);
int Read(const Args& args);

const Command kCommands[] = {
    {"scramble", "PASSWORD KEY | -", "prints the scrambled buffer in 64 hexadecimal digits",
     Scramble,
     "answers: 64 hexadecimal digits (exit 0); a password of more than 31 characters, which\n"
     "the stored form cannot keep, is an error (exit 2)."},
    {"read", "HEX KEY | -", "prints the password of a scrambled buffer", Read,
     "answers: the password the buffer holds under KEY (another key gives another text)."},
};

int ScrambleOne(const Args& args) {
    if (args.size() != 2) {
        return Fail("a password and a key are expected");
    }
    if (args[0].size() > static_cast<std::size_t>(CCryptPassword::kMaxPassword)) {
        return Fail("a password has at most 31 characters");
    }
    CString hex;
    CCryptPassword(args[0].c_str(), args[1].c_str()).PrintTo(hex);
    std::cout << hex.GetString() << '\n';
    return kOk;
}

int Scramble(const Args& args) {
    if (!Expect(args, 1, 2, kCommands[0])) {
        return kFailure;
    }
    return PerInput(args, ScrambleOne);
}

int ReadOne(const Args& args) {
    if (args.size() != 2) {
        return Fail("a scrambled buffer and a key are expected");
    }
    const std::string& hex = args[0];
    if (hex.size() != 64 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return Fail("a scrambled buffer is 64 hexadecimal digits");
    }
    CCryptPassword::byte buffer[CCryptPassword::kBufferSize];
    for (int i = 0; i < CCryptPassword::kBufferSize; ++i) {
        buffer[i] = static_cast<CCryptPassword::byte>(std::stoi(hex.substr(2 * i, 2), nullptr, 16));
    }
    std::cout << CCryptPassword(&buffer, args[1].c_str()).AsChaine().c_str() << '\n';
    return kOk;
}

int Read(const Args& args) {
    if (!Expect(args, 1, 2, kCommands[1])) {
        return kFailure;
    }
    return PerInput(args, ReadOne);
}

void Demo(std::ostream& out) {
    const CCryptPassword password("Secret", "Clef");
    CString hex;
    password.PrintTo(hex);
    out << "  \"Secret\" with key \"Clef\": " << hex.GetString() << '\n'
        << "  read back with \"Clef\": \"" << password.AsChaine().c_str() << "\", with \"clef\": "
        << (CCryptPassword(password.GetBuffer(), "clef").Is("Secret") ? "the same" : "another text")
        << '\n';
}

const RegisterArea kArea({"password", "password scrambling for storage", kCommands, Demo, 100});

}  // namespace
}  // namespace nvk::tool
