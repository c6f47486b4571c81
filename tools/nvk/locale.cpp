// nvk locale: what a locale says, as the language layer gives it.
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/context/loc.h"
#include "nvk/context/locale.h"

namespace nvk::tool {
namespace {

int Months(const Args& args);
int Item(const Args& args);
int Current(const Args& args);

const Command kCommands[] = {
    {"months", "LCID [--short]", "prints the twelve month names of a locale", Months},
    {"item", "LCID ITEM", "prints a locale item (31 is the short date format)", Item},
    {"current", "", "prints the process's locale, string language and country", Current},
};

bool Number(const std::string& text, std::uint32_t& value) {
    long long number = 0;
    if (!ParseLong(text, number) || number < 0 || number > 0xFFFFFFFFll) {
        return false;
    }
    value = static_cast<std::uint32_t>(number);
    return true;
}

int Months(const Args& given) {
    Args args = given;
    bool shortForm = TakeFlag(args, "--short");
    if (!Expect(args, 1, 1, kCommands[0])) {
        return kFailure;
    }
    std::uint32_t lcid = 0;
    if (!Number(args[0], lcid)) {
        return Fail("not a locale id: " + args[0]);
    }
    const PTableau<Chaine>& names = ELocale(lcid).Cache().GetMonthNames(shortForm);
    if (names[0].IsEmpty()) {
        std::cerr << "nvk: no month names for locale " << lcid << '\n';
        return kNegative;
    }
    for (int i = 0; i < names.Size(); ++i) {
        std::cout << names[i].c_str() << '\n';
    }
    return kOk;
}

int Item(const Args& args) {
    if (!Expect(args, 2, 2, kCommands[1])) {
        return kFailure;
    }
    std::uint32_t lcid = 0;
    std::uint32_t item = 0;
    if (!Number(args[0], lcid) || !Number(args[1], item)) {
        return Fail("not a locale id and an item number");
    }
    Chaine value = ELocale(lcid).Cache().GetLocaleItem(item);
    if (value.IsEmpty()) {
        std::cerr << "nvk: locale " << lcid << " has no item " << item << '\n';
        return kNegative;
    }
    std::cout << value.c_str() << '\n';
    return kOk;
}

int Current(const Args& args) {
    if (!Expect(args, 0, 0, kCommands[2])) {
        return kFailure;
    }
    ELoc& loc = ELoc::Get();
    std::cout << "locale " << loc.GetThreadLCID() << ", strings in language " << loc.GetLangID()
              << ", country \"" << loc.GetCountry().c_str() << "\"\n";
    return kOk;
}

void Demo(std::ostream& out) {
    for (std::uint32_t lcid : {1036u, 2055u}) {
        ELocale locale(lcid);
        const PTableau<Chaine>& names = locale.Cache().GetMonthNames(false);
        out << "  months of " << lcid << ": " << names[0].c_str() << ", " << names[1].c_str()
            << ", " << names[2].c_str() << " ...; short date "
            << locale.Cache().GetLocaleItem(31).c_str() << '\n';
    }
    out << "  the sortable locale 2047 writes dates as "
        << ELocale(2047).Cache().GetLocaleItem(31).c_str() << '\n';
}

const RegisterArea kArea({"locale", "locales: month names and other items", kCommands, Demo, 21});

}  // namespace
}  // namespace nvk::tool
