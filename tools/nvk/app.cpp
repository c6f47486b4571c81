// nvk app: who the application is, as the process dictionary and the skin
// tell it.
#include <iostream>

#include "cli.h"
#include "nvk/services/app_identity.h"

namespace nvk::tool {
namespace {

int Show(const Args& args);

const Command kCommands[] = {
    {"show", "[--dico KEY=VALUE]...",
     "prints the short name, name, society id and skin folder of the application", Show,
     "answers: four lines \"name: value\"; the dictionary is what --dico states, as an\n"
     "application fills it (\"App.ShortName\", \"App.Name\", \"App.SocietyID\")."},
};

int Show(const Args& given) {
    Args args = given;
    if (!TakeDico(args) || !Expect(args, 0, 0, kCommands[0])) {
        return kFailure;
    }
    std::cout << "short name: " << GetShortName().c_str() << '\n'
              << "name: " << GetAppName().c_str() << '\n'
              << "society id: " << GetSocietyID().c_str() << '\n'
              << "skin folder: " << GetSkinFolder().c_str() << '\n';
    return kOk;
}

const RegisterArea kArea({"app", "the application's identity: dictionary and skin", kCommands,
                          nullptr, 23});

}  // namespace
}  // namespace nvk::tool
