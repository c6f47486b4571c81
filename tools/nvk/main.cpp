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
                 "       nvk version | demo | --help\n\nareas:\n";
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

bool IsHelp(const std::string& word) {
    return word == "--help" || word == "-h" || word == "help";
}

}  // namespace

int main(int argc, char** argv) {
    Args args(argv + 1, argv + argc);
    if (args.empty() || IsHelp(args[0])) {
        PrintAreas();
        return args.empty() ? nvk::tool::kFailure : nvk::tool::kOk;
    }
    if (args[0] == "version") {
        std::cout << "nvk " << kVersion << '\n';
        return nvk::tool::kOk;
    }
    if (args[0] == "demo") {
        return RunDemo();
    }
    for (const Area& area : nvk::tool::Areas()) {
        if (area.name != args[0]) {
            continue;
        }
        if (args.size() < 2 || IsHelp(args[1])) {
            PrintCommands(area);
            return args.size() < 2 ? nvk::tool::kFailure : nvk::tool::kOk;
        }
        for (const auto& command : area.commands) {
            if (command.name == args[1]) {
                Args rest(args.begin() + 2, args.end());
                if (!rest.empty() && IsHelp(rest[0])) {
                    std::cout << "usage: nvk " << area.name << ' ' << command.name << ' '
                              << command.usage << "\n  " << command.summary << '\n';
                    return nvk::tool::kOk;
                }
                return command.run(rest);
            }
        }
        return nvk::tool::Fail("unknown command '" + args[1] + "' in area '" + args[0] +
                               "' (see nvk " + args[0] + " --help)");
    }
    return nvk::tool::Fail("unknown area '" + args[0] + "' (see nvk --help)");
}
