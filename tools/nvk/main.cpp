// nvk <area> <command> [arguments]: the library's command-line tool.
#include <algorithm>
#include <iostream>
#include <string>

#include "cli.h"
#include "complete.h"
#include "terminal_text.h"

namespace {

using nvk::tool::Area;
using nvk::tool::Args;

constexpr const char* kVersion = "0.1.0";

void PrintAreas() {
    std::cout
        << "usage: nvk [--raw] <area> <command> [arguments]\n"
           "       nvk --version | demo | --help | --help-all\n\n"
           "The command-line tool of the utility library, for people and for scripts. Each area\n"
           "has its commands: nvk AREA --help lists them, nvk AREA COMMAND --help tells more.\n\n"
           "Text is the library's, Windows-1252, converted at the edges: arguments and standard\n"
           "input from the terminal's charset (UTF-8, or the one LC_ALL, LC_CTYPE or LANG names)\n"
           "and answers back to it. An argument or input that cannot be converted is refused\n"
           "with exit status 2; a character of an answer that the terminal's charset lacks shows\n"
           "as \"?\" and the exit status is 2.\n\n"
           "Exit status: 0 for success or a positive answer, 1 for a valid negative answer\n"
           "(invalid, not found), 2 for bad usage or a failure, with a one-line message on\n"
           "standard error.\n\n"
           "options:\n"
           "  --raw        pass arguments, standard input and answers as bytes, unconverted\n"
           "  --help       this help; after an area or a command, theirs\n"
           "  --help-all   this help and that of every area and command\n"
           "  --version    the version of the tool\n\n"
           "areas:\n";
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

constexpr const char* kInputNote =
    "With - in place of the arguments, each line of standard input is one input and gets one "
    "answer line, in order; a line that cannot be read gets \"error: ...\".\n";

// `inputNote`: whether to explain "-" where the command takes it.
void PrintCommand(const Area& area, const nvk::tool::Command& command, bool inputNote = true) {
    std::cout << "usage: nvk " << area.name << ' ';
    if (!nvk::tool::IsCommandArea(area)) {
        std::cout << command.name << ' ';
    }
    std::cout << command.usage << "\n  " << command.summary << '\n';
    if (!command.answers.empty()) {
        std::cout << '\n' << command.answers << '\n';
    }
    if (inputNote && command.usage.find("| -") != std::string_view::npos) {
        std::cout << '\n' << kInputNote;
    }
}

// Every help the tool has, one after the other, for the manual page.
void PrintAll() {
    PrintAreas();
    std::cout << "\nCommands whose usage ends in \"| -\" read standard input. " << kInputNote;
    for (const Area& area : nvk::tool::Areas()) {
        std::cout << "\nnvk " << area.name << ":\n";
        for (const auto& command : area.commands) {
            std::cout << '\n';
            PrintCommand(area, command, false);
        }
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
    if (status != nvk::tool::kFailure && nvk::tool::LostCharacters()) {
        return nvk::tool::Fail(
            "the answer holds characters that the terminal's charset lacks (see --raw)");
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

// The arguments as the library's text; false, after the message, for one
// that cannot be.
bool ConvertArguments(Args& args) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string ansi;
        const std::string why = nvk::tool::FromTerminal(args[i], ansi);
        if (!why.empty()) {
            nvk::tool::Fail("argument " + std::to_string(i + 1) + " " + why + " (see --raw)");
            return false;
        }
        args[i] = std::move(ansi);
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Args args(argv + 1, argv + argc);
    if (!args.empty() && args[0] == "--complete") {
        return nvk::tool::Complete(Args(args.begin() + 1, args.end()));
    }
    const bool raw = !args.empty() && args[0] == "--raw";
    if (raw) {
        args.erase(args.begin());
    }
    nvk::tool::SetRawBytes(raw);
    if (!ConvertArguments(args)) {
        return nvk::tool::kFailure;
    }
    nvk::tool::ConvertStandardStreams();
    if (args.empty()) {
        return nvk::tool::Fail("usage: nvk <area> <command> [arguments] (see nvk --help)");
    }
    if (IsHelp(args[0])) {
        PrintAreas();
        return nvk::tool::kOk;
    }
    if (args[0] == "--help-all") {
        PrintAll();
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
        return args.size() == 1 ? Finish(RunDemo()) : nvk::tool::Fail("usage: nvk demo");
    }
    if (args[0] == "version" && !IsHelp(args[1]) && args[1] != "show" && args[1] != "patch") {
        args.insert(args.begin() + 1, "show");
    }
    for (const Area& area : nvk::tool::Areas()) {
        if (area.name != args[0]) {
            continue;
        }
        if (nvk::tool::IsCommandArea(area)) {
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
