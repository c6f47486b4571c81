// nvk paths: where the well-known folders of an application are, and why.
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/paths/special_nvk_path.h"

namespace nvk::tool {
namespace {

using namespace SpecialNVKPath;

int Get(const Args& args);
int Set(const Args& args);
int Legacy(const Args& args);
int DbServer(const Args& args);
int List(const Args& args);

const Command kCommands[] = {
    {"get", "ID|KEY [--empty-if-missing] [--dico KEY=VALUE]... [--app-folder DIR]",
     "prints the folder of an identifier (name or number), or of an own key of Paths.ini and "
     "the rules",
     Get,
     "answers: the folder (exit 0), or an empty line (exit 1) when it can't be found or made;\n"
     "a missing folder is made unless --empty-if-missing. An unknown identifier number exits 2\n"
     "with the names. --dico KEY=VALUE states the application as it fills its dictionary;\n"
     "--app-folder DIR is where Paths.ini lies and what stands for the application's folder\n"
     "(by default the tool's own)."},
    {"set", "KEY VALUE [--memory] [--dico KEY=VALUE]... [--app-folder DIR]",
     "stores a folder in Paths.ini as written (relative and %VAR% kept), or for the process "
     "with --memory; an empty VALUE removes it",
     Set,
     "answers: the folder as it now resolves (exit 0), or exit 1 when the folder can't be made\n"
     "or Paths.ini can't be written."},
    {"legacy", "NAME [--dico KEY=VALUE]... [--app-folder DIR]",
     "prints an older folder, from the registry and well-known places", Legacy,
     "names: CommonTables, FoldersBase, Modeles, AppFolder, DossiersRoot, DossiersDocuments\n"
     "(\"Legacy\" before them is taken too). Answers: the folder (exit 0), or an empty line\n"
     "(exit 1)."},
    {"dbserver", "ID|PATH [--dico KEY=VALUE]... [--app-folder DIR]",
     "prints the database server of a folder: its line in \"DBServers\", else its share", DbServer,
     "answers: the server (exit 0), or an empty line (exit 1) for a local folder."},
    {"list", "[--empty-if-missing] [--dico KEY=VALUE]... [--app-folder DIR]",
     "prints every identifier, its folder and where it came from", List,
     "answers: one line an identifier: name, number, folder and its source (memory,\n"
     "Paths.ini, rule or default), separated by tabs; a folder that can't be found or made\n"
     "is empty."},
};

// The options that every command takes; false after the message.
bool TakeContext(Args& args) {
    TakeAppFolder(args);
    return TakeDico(args);
}

std::string IdNames() {
    std::string names;
    const PTableau<ID>& ids = AllIDs();
    for (int i = 0; i < ids.Size(); ++i) {
        names += (i == 0 ? "" : ", ") + std::string(KeyOf(ids[i]));
    }
    return names;
}

// An identifier by name or number. A number outside the table is refused;
// any other word is a key of the application's own.
enum class Found { Id, Key, Unknown };
Found ParseId(const std::string& text, ID& id) {
    long long number = 0;
    if (ParseLong(text, number)) {
        if (number >= 0 && number < 1000 && KeyOf(static_cast<ID>(number)) != nullptr) {
            id = static_cast<ID>(number);
            return Found::Id;
        }
        Fail("unknown identifier " + text + "; the identifiers are " + IdNames());
        return Found::Unknown;
    }
    return FindID(text.c_str(), id) ? Found::Id : Found::Key;
}

int Answer(const Chaine& folder) {
    std::cout << folder.c_str() << '\n';
    return folder.IsEmpty() ? kNegative : kOk;
}

int Get(const Args& given) {
    Args args = given;
    const bool empty = TakeFlag(args, "--empty-if-missing");
    if (!TakeContext(args) || !Expect(args, 1, 1, kCommands[0])) {
        return kFailure;
    }
    const NotExistAction action = empty ? EmptyIfMissing : CreateIfMissing;
    ID id = AppParamsRoot;
    switch (ParseId(args[0], id)) {
        case Found::Id:
            return Answer(SpecialNVKPath::Get(id, action));
        case Found::Key:
            return Answer(SpecialNVKPath::Get(Chaine(args[0].c_str()), action));
        case Found::Unknown:
            break;
    }
    return kFailure;
}

int Set(const Args& given) {
    Args args = given;
    const bool memory = TakeFlag(args, "--memory");
    if (!TakeContext(args) || !Expect(args, 2, 2, kCommands[1])) {
        return kFailure;
    }
    ID id = AppParamsRoot;
    const Found found = ParseId(args[0], id);
    if (found == Found::Unknown) {
        return kFailure;
    }
    const Chaine key = found == Found::Id ? Chaine(KeyOf(id)) : Chaine(args[0].c_str());
    if (!SpecialNVKPath::Set(key, args[1].c_str(), CreateIfMissing,
                             memory ? StoreInMemory : StoreInFile)) {
        return kNegative;
    }
    std::cout << (found == Found::Id ? SpecialNVKPath::Get(id, EmptyIfMissing)
                                     : SpecialNVKPath::Get(key, EmptyIfMissing))
                     .c_str()
              << '\n';
    return kOk;
}

int Legacy(const Args& given) {
    static constexpr const char* kNames[] = {"CommonTables", "FoldersBase",  "Modeles",
                                             "AppFolder",    "DossiersRoot", "DossiersDocuments"};
    Args args = given;
    if (!TakeContext(args) || !Expect(args, 1, 1, kCommands[2])) {
        return kFailure;
    }
    Chaine name(args[0].c_str());
    if (name.StartsWithNoCase("Legacy")) {
        name = name.Mid(6);
    }
    for (int i = 0; i < 6; ++i) {
        if (name.CompareNoCase(kNames[i]) == 0) {
            return Answer(SpecialNVKPath::Get(static_cast<LegacyID>(i)));
        }
    }
    return Fail("unknown legacy folder " + args[0] +
                "; the names are CommonTables, FoldersBase, Modeles, AppFolder, DossiersRoot, "
                "DossiersDocuments");
}

int DbServer(const Args& given) {
    Args args = given;
    if (!TakeContext(args) || !Expect(args, 1, 1, kCommands[3])) {
        return kFailure;
    }
    const std::string& target = args[0];
    if (target.find_first_of("\\/:") != std::string::npos) {
        return Answer(DBServerForPath(target.c_str()));
    }
    ID id = AppParamsRoot;
    switch (ParseId(target, id)) {
        case Found::Id:
            return Answer(DBServer(id));
        case Found::Key:
            return Fail("unknown identifier " + target + "; the identifiers are " + IdNames());
        case Found::Unknown:
            break;
    }
    return kFailure;
}

int List(const Args& given) {
    static constexpr const char* kOrigins[] = {"memory", "Paths.ini", "rule", "default"};
    Args args = given;
    const bool empty = TakeFlag(args, "--empty-if-missing");
    if (!TakeContext(args) || !Expect(args, 0, 0, kCommands[4])) {
        return kFailure;
    }
    const PTableau<ID>& ids = AllIDs();
    for (int i = 0; i < ids.Size(); ++i) {
        Origin origin = FromDefault;
        const Chaine folder =
            SpecialNVKPath::Get(ids[i], empty ? EmptyIfMissing : CreateIfMissing, origin);
        std::cout << KeyOf(ids[i]) << '\t' << static_cast<int>(ids[i]) << '\t' << folder.c_str()
                  << '\t' << kOrigins[origin] << '\n';
    }
    return kOk;
}

const RegisterArea kArea({"paths", "the well-known folders of an application, and why", kCommands,
                          nullptr, 50});

}  // namespace
}  // namespace nvk::tool
