// nvk vars: starts the variable editor.
#include <algorithm>
#include <iostream>

#include "cli.h"
#include "nvk/services/nvk_vars.h"

namespace nvk::tool {
namespace {

int Run(const Args& args);

const Command kCommands[] = {
    {"run",
     "DICO [--select X] [--rubric R]... [--country C] [--notepad] [--dico KEY=VALUE]... "
     "[--app-folder DIR]",
     "starts the variable editor on the dictionary DICO", Run,
     "answers: the tool's path (exit 0) once started, or exit 1 when it is found neither in\n"
     "the registry (\"NVKVars\" of HKLM\\Software\\NVK\\Common\\Settings) nor in the Tools\n"
     "folder. A selection or rubrics go through the exchange file NVKVars.ini in the\n"
     "temporary folder; otherwise everything goes on the command line."},
};

int Run(const Args& given) {
    Args args = given;
    TakeAppFolder(args);
    if (!TakeDico(args)) {
        return kFailure;
    }
    ChaineClefsNC rubrics;
    for (std::string rubric = TakeOption(args, "--rubric"); !rubric.empty();
         rubric = TakeOption(args, "--rubric")) {
        rubrics.Add(rubric.c_str());
    }
    const std::string select = TakeOption(args, "--select");
    // An empty --country filters nothing; without it, the current country.
    const bool countryGiven = std::find(args.begin(), args.end(), "--country") != args.end();
    const std::string country = TakeOption(args, "--country");
    const bool notepad = TakeFlag(args, "--notepad");
    if (!Expect(args, 1, 1, kCommands[0])) {
        return kFailure;
    }
    ENVKVars vars(args[0].c_str());
    vars.SetRubrics(rubrics);
    vars.SetSelect(select.c_str());
    vars.SetNotepad(notepad);
    if (countryGiven) {
        vars.SetCountry(country.c_str());
    }
    const Chaine tool = ENVKVars::GetNVKVarsPath();
    if (tool.IsEmpty()) {
        std::cerr << "nvk: the variable editor is neither in the registry nor in Tools\n";
        return kNegative;
    }
    if (!vars.Run()) {
        return Fail("the variable editor did not start");
    }
    std::cout << tool.c_str() << '\n';
    return kOk;
}

const RegisterArea kArea({"vars", "the variable editor, started on a dictionary", kCommands,
                          nullptr, 72});

}  // namespace
}  // namespace nvk::tool
