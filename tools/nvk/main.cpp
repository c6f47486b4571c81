// nvk <area> <command> [arguments]: the library's command-line tool.
#include <algorithm>
#include <iostream>
#include <string>

#include "cli.h"

namespace {

using nvk::tool::Area;
using nvk::tool::Args;

constexpr const char* kVersion = "0.1.0";

void PrintAreas() {
    std::cout << "usage: nvk <area> <command> [arguments]\n"
                 "       nvk --version | demo | --help\n\nareas:\n";
    for (const Area& area : nvk::tool::Areas()) {
        std::cout << "  " << area.name
                  << std::string(12 - std::min<size_t>(area.name.size(), 11), ' ') << area.summary
                  << '\n';
    }
}

void PrintCommands(const Area& area) {
    std::cout << "usage: nvk " << area.name << " <command> [arguments]\n\ncommands:\n";
    for (const auto& command : area.commands) {
        std::cout << "  " << command.name << ' ' << command.usage << "\n      " << command.summary
                  << '\n';
    }
    std::cout << "\nnvk " << area.name << " <command> --help tells more of each.\n";
}

// An area whose only command bears its name is that command: "nvk find ROOT".
bool IsCommandArea(const Area& area) {
    return area.commands.size() == 1 && area.commands[0].name == area.name;
}

void PrintCommand(const Area& area, const nvk::tool::Command& command) {
    std::cout << "usage: nvk " << area.name << ' ';
    if (!IsCommandArea(area)) {
        std::cout << command.name << ' ';
    }
    std::cout << command.usage << "\n  " << command.summary << '\n';
    if (!command.answers.empty()) {
        std::cout << '\n' << command.answers << '\n';
    }
    if (command.usage.find("| -") != std::string_view::npos) {
        std::cout << "\nWith - in place of the arguments, each line of standard input is one "
                     "input and gets one answer line, in order; a line that cannot be read gets "
                     "\"error: ...\".\n";
    }
}

int RunDemo() {
    std::cout << "nvk " << kVersion << ": a tour of the library\n";
    for (const Area& area : nvk::tool::Areas()) {
        if (area.demo != nullptr) {
            std::cout << "\n== " << area.name << ": " << area.summary << '\n';
            area.demo(std::cout);
        }
    }
    return nvk::tool::kOk;
}

// An answer that could not be written (a full disk, a closed pipe) is a
// failure, whatever the command found.
int Finish(int status) {
    if (status != nvk::tool::kFailure && !std::cout.flush()) {
        return nvk::tool::Fail("cannot write to standard output");
    }
    return status;
}

bool IsHelp(const std::string& word) {
    return word == "--help" || word == "-h" || word == "help";
}

bool AsksHelp(const Args& args) {
    return std::find(args.begin(), args.end(), "--help") != args.end() ||
           (!args.empty() && IsHelp(args[0]));
}

}  // namespace

int main(int argc, char** argv) {
    Args args(argv + 1, argv + argc);
    if (args.empty()) {
        return nvk::tool::Fail("usage: nvk <area> <command> [arguments] (see nvk --help)");
    }
    if (IsHelp(args[0])) {
        PrintAreas();
        return nvk::tool::kOk;
    }
    // "nvk version" alone is the tool's own version; "nvk version FILE" is
    // the version area's show command.
    if ((args[0] == "version" && args.size() == 1) || args[0] == "--version") {
        std::cout << "nvk " << kVersion << '\n';
        return nvk::tool::kOk;
    }
    if (args[0] == "demo") {
        if (AsksHelp(Args(args.begin() + 1, args.end()))) {
            std::cout << "usage: nvk demo\n  prints a short tour of the library\n";
            return nvk::tool::kOk;
        }
        return args.size() == 1 ? RunDemo() : nvk::tool::Fail("usage: nvk demo");
    }
    if (args[0] == "version" && !IsHelp(args[1]) && args[1] != "show" && args[1] != "patch") {
        args.insert(args.begin() + 1, "show");
    }
    for (const Area& area : nvk::tool::Areas()) {
        if (area.name != args[0]) {
            continue;
        }
        if (IsCommandArea(area)) {
            const Args rest(args.begin() + 1, args.end());
            if (AsksHelp(rest)) {
                PrintCommand(area, area.commands[0]);
                return nvk::tool::kOk;
            }
            nvk::tool::SetCurrentArea(area.name);
            return Finish(area.commands[0].run(rest));
        }
        if (args.size() >= 2 && IsHelp(args[1])) {
            PrintCommands(area);
            return nvk::tool::kOk;
        }
        if (args.size() < 2) {
            return nvk::tool::Fail("usage: nvk " + args[0] + " <command> [arguments] (see nvk " +
                                   args[0] + " --help)");
        }
        for (const auto& command : area.commands) {
            if (command.name == args[1]) {
                const Args rest(args.begin() + 2, args.end());
                if (AsksHelp(rest)) {
                    PrintCommand(area, command);
                    return nvk::tool::kOk;
                }
                nvk::tool::SetCurrentArea(area.name);
                return Finish(command.run(rest));
            }
        }
        return nvk::tool::Fail("unknown command '" + args[1] + "' in area '" + args[0] +
                               "' (see nvk " + args[0] + " --help)");
    }
    return nvk::tool::Fail("unknown area '" + args[0] + "' (see nvk --help)");
}
