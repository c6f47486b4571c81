#include "cli.h"

#include <algorithm>
#include <charconv>
#include <iostream>
#include <sstream>

#include "native_path.h"
#include "nvk/paths/special_nvk_path.h"
#include "nvk/services/global_dico.h"
#include "os/api/path_map.h"
#include "terminal_text.h"

namespace nvk::tool {

namespace {

std::vector<Area>& Registry() {
    static std::vector<Area> areas;
    return areas;
}

std::string_view g_area;
bool g_readingInput = false;

}  // namespace

RegisterArea::RegisterArea(const Area& area) {
    auto& areas = Registry();
    areas.insert(std::upper_bound(areas.begin(), areas.end(), area,
                                  [](const Area& a, const Area& b) { return a.order < b.order; }),
                 area);
}

const std::vector<Area>& Areas() {
    return Registry();
}

bool IsCommandArea(const Area& area) {
    return area.commands.size() == 1 && area.commands[0].name == area.name;
}

int Fail(std::string_view message) {
    (g_readingInput ? std::cout << "error: " : std::cerr << "nvk: ") << message << '\n';
    return kFailure;
}

void SetCurrentArea(std::string_view area) {
    g_area = area;
}

bool Expect(const Args& args, std::size_t minimum, std::size_t maximum, const Command& command) {
    const auto option = std::find_if(args.begin(), args.end(), [](const std::string& arg) {
        return arg.size() > 2 && arg.starts_with("--");
    });
    // A command that is its area's only one is called by the area's name.
    const std::string called = "nvk " + std::string(g_area) +
                               (command.name == g_area ? "" : " " + std::string(command.name));
    if (option != args.end()) {
        Fail("unknown option " + *option + " (see " + called + " --help)");
        return false;
    }
    if (args.size() >= minimum && args.size() <= maximum) {
        return true;
    }
    Fail("usage: " + called + " " + std::string(command.usage));
    return false;
}

bool ReadLine(std::string& line, std::string& error) {
    std::string text;
    if (!std::getline(std::cin, text)) {
        return false;
    }
    if (!text.empty() && text.back() == '\r') {
        text.pop_back();
    }
    error = FromTerminal(text, line);
    return true;
}

Args Words(const std::string& line) {
    std::istringstream in(line);
    Args words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

int RunSession(
    const std::function<std::string(const Args& words, const std::string& line)>& answer) {
    int status = kOk;
    std::string line;
    std::string error;
    while (ReadLine(line, error)) {
        if (error.empty()) {
            const Args words = Words(line);
            if (words.empty()) {
                continue;
            }
            error = answer(words, line);
        } else {
            error = "the line " + error;
        }
        if (!error.empty()) {
            std::cout << "error\n";
            std::cerr << "nvk: " << error << '\n';
            status = kFailure;
        }
    }
    return status;
}

int PerInput(const Args& args, int (*answer)(const Args& args), LineAs lineAs) {
    if (args.size() != 1 || args[0] != "-") {
        return answer(args);
    }
    g_readingInput = true;
    int worst = kOk;
    std::string line;
    std::string error;
    while (ReadLine(line, error)) {
        if (!error.empty()) {
            worst = std::max(worst, Fail("the line " + error));
            std::cout.flush();
            continue;
        }
        Args lineArgs;
        if (lineAs == LineAs::WholeText) {
            lineArgs.push_back(line);
        } else {
            lineArgs = Words(line);
        }
        worst = std::max(worst, answer(lineArgs));
        std::cout.flush();
    }
    g_readingInput = false;
    return worst;
}

bool ReadingInput() {
    return g_readingInput;
}

std::string TakeOption(Args& args, std::string_view name, std::string fallback) {
    for (auto it = args.begin(); it != args.end(); ++it) {
        if (*it == name && it + 1 != args.end()) {
            std::string value = *(it + 1);
            args.erase(it, it + 2);
            return value;
        }
    }
    return fallback;
}

bool TakeFlag(Args& args, std::string_view name) {
    auto it = std::find(args.begin(), args.end(), name);
    if (it == args.end()) {
        return false;
    }
    args.erase(it);
    return true;
}

bool TakeDico(Args& args) {
    for (auto it = std::find(args.begin(), args.end(), "--dico"); it != args.end();
         it = std::find(args.begin(), args.end(), "--dico")) {
        const std::size_t equals = it + 1 == args.end() ? std::string::npos : (it + 1)->find('=');
        if (equals == std::string::npos || equals == 0) {
            Fail("--dico takes KEY=VALUE");
            return false;
        }
        const std::string& entry = *(it + 1);
        GlobalDico::Get().SetValue(entry.substr(0, equals).c_str(),
                                   entry.substr(equals + 1).c_str());
        args.erase(it, it + 2);
    }
    return true;
}

void TakeAppFolder(Args& args) {
    const std::string folder = TakeOption(args, "--app-folder");
    if (folder.empty()) {
        return;
    }
    // A folder of this system's own syntax, or one in drive form.
    Chaine path = folder.starts_with('/')
                      ? Chaine(os::ToWindowsPath(NativeFromAnsi(folder).c_str()).c_str())
                      : Chaine(folder.c_str());
    SpecialNVKPath::SetAppFolder(path.MakeAbsolute());
}

bool ParseLong(const std::string& text, long long& value) {
    const char* end = text.data() + text.size();
    auto [ptr, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && ptr == end && !text.empty();
}

}  // namespace nvk::tool
