// nvk res: the library's own resources, its strings and its texts.
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/context/loc.h"
#include "nvk/context/string_load.h"
#include "os/api/resource.h"

namespace nvk::tool {
namespace {

int String(const Args& args);
int Text(const Args& args);

const Command kCommands[] = {
    {"string", "ID [--lang LCID]",
     "prints string ID, in the language LCID or the process's, with the fall-back", String},
    {"text", "ID [--lang LCID]", "prints the \"TXT\" resource ID", Text},
};

// The language of --lang, or the process's string language.
bool Language(Args& args, std::uint16_t& language) {
    std::string option = TakeOption(args, "--lang");
    if (option.empty()) {
        language = ELoc::Get().GetLangID();
        return true;
    }
    long long value = 0;
    if (!ParseLong(option, value) || value < 0 || value > 0xFFFF) {
        return false;
    }
    language = static_cast<std::uint16_t>(value);
    return true;
}

bool Id(const std::string& text, unsigned& id) {
    long long value = 0;
    if (!ParseLong(text, value) || value < 0 || value > 0xFFFF) {
        return false;
    }
    id = static_cast<unsigned>(value);
    return true;
}

int String(const Args& given) {
    Args args = given;
    std::uint16_t language = 0;
    if (!Language(args, language)) {
        return Fail("not a language id");
    }
    if (!Expect(args, 1, 1, kCommands[0])) {
        return kFailure;
    }
    unsigned id = 0;
    if (!Id(args[0], id)) {
        return Fail("not a string id: " + args[0]);
    }
    Chaine value;
    if (!LoadStringIn(value, id, FindStringModule(id), language)) {
        std::cerr << "nvk: no string " << id << '\n';
        return kNegative;
    }
    std::cout << value.c_str() << '\n';
    return kOk;
}

int Text(const Args& given) {
    Args args = given;
    std::string option = TakeOption(args, "--lang");
    if (!Expect(args, 1, 1, kCommands[1])) {
        return kFailure;
    }
    unsigned id = 0;
    long long language = 0;
    if (!Id(args[0], id) ||
        (!option.empty() && (!ParseLong(option, language) || language < 0 || language > 0xFFFF))) {
        return Fail("not a resource or language id");
    }
    os::HMODULE module = LibraryModule();
    os::LPCSTR name = os::MAKEINTRESOURCEA(static_cast<os::WORD>(id));
    os::HRSRC resource =
        option.empty() ? os::FindResourceA(module, name, "TXT")
                       : os::FindResourceExA(module, "TXT", name, static_cast<os::WORD>(language));
    if (resource == nullptr) {
        std::cerr << "nvk: no text " << id << '\n';
        return kNegative;
    }
    const auto* bytes =
        static_cast<const char*>(os::LockResource(os::LoadResource(module, resource)));
    std::cout << std::string_view(bytes, os::SizeofResource(module, resource)) << '\n';
    return kOk;
}

void Demo(std::ostream& out) {
    Chaine french;
    Chaine german;
    LoadStringIn(french, 14014, FindStringModule(14014), 1036);
    LoadStringIn(german, 14014, FindStringModule(14014), 2055);
    out << "  message 14014 in French: " << french.c_str() << '\n'
        << "  and in Swiss German: " << german.c_str() << '\n';
    Chaine here(reinterpret_cast<const char*>(64008));
    out << "  label 64008 for this process (language " << ELoc::Get().GetLangID()
        << "): " << here.c_str() << '\n';
}

const RegisterArea kArea({"res", "the library's strings and texts, in French and Swiss German",
                          kCommands, Demo, 20});

}  // namespace
}  // namespace nvk::tool
