// nvk key: the keys of dossiers.
#include <cstdio>
#include <ctime>
#include <iostream>

#include "cli.h"
#include "nvk/services/nvk_key.h"

namespace nvk::tool {
namespace {

int New(const Args& args);
int Show(const Args& args);

const Command kCommands[] = {
    {"new", "EXT NAME", "prints a new key for a dossier of extension EXT and name NAME", New},
    {"show", "TEXT | -", "prints the bytes, the creation time and the name sum of a key", Show,
     "answers: one line \"bytes .. .. .. .. .. .. .. ..  created YYYY-MM-DD hh:mm:ss UTC  sum N\"\n"
     "(exit 0), or \"no key\" (exit 1) for the zero key, which is also what a text of other\n"
     "than 16 hexadecimal digits reads as."},
};

int New(const Args& args) {
    if (!Expect(args, 2, 2, kCommands[0])) {
        return kFailure;
    }
    const CNVKKey key(CNVKKey::GenerateUniqueKey(args[0].c_str(), args[1].c_str()));
    std::cout << static_cast<Chaine>(key).c_str() << '\n';
    return kOk;
}

int ShowOne(const Args& args) {
    const std::uint64_t value = CNVKKey(Chaine(args.empty() ? "" : args[0].c_str()));
    if (value == 0) {
        std::cout << "no key\n";
        return kNegative;
    }
    std::cout << "bytes";
    for (int i = 0; i < 8; ++i) {
        char byte[4];
        std::snprintf(byte, sizeof byte, " %02x", static_cast<unsigned>(value >> (8 * i) & 0xFF));
        std::cout << byte;
    }
    // Bytes 3 to 6: seconds since 1970, little-endian.
    const auto seconds = static_cast<std::time_t>(static_cast<std::uint32_t>(value >> 24));
    std::tm moment{};
    moment = *std::gmtime(&seconds);
    char created[32];
    std::strftime(created, sizeof created, "%Y-%m-%d %H:%M:%S", &moment);
    std::cout << "  created " << created << " UTC  sum " << (value >> 56) << '\n';
    return kOk;
}

int Show(const Args& args) {
    if (!Expect(args, 1, 1, kCommands[1])) {
        return kFailure;
    }
    return PerInput(args, ShowOne);
}

const RegisterArea kArea({"key", "the 64-bit keys of dossiers", kCommands, nullptr, 70});

}  // namespace
}  // namespace nvk::tool
