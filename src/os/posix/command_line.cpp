#include "os/posix/command_line.h"

namespace nvk::os::posix {

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view line) {
    std::vector<std::string> arguments;
    std::size_t i = 0;
    while (i < line.size() && IsBlank(line[i])) {
        ++i;
    }
    if (i == line.size()) {
        return arguments;
    }
    std::string program;
    if (line[i] == '"') {
        std::size_t close = line.find('"', i + 1);
        program = line.substr(i + 1, close == std::string_view::npos ? close : close - i - 1);
        i = close == std::string_view::npos ? line.size() : close + 1;
    }
    while (i < line.size() && !IsBlank(line[i])) {
        program += line[i++];
    }
    arguments.push_back(program);

    std::string current;
    bool inArgument = false;
    bool quoted = false;
    while (i < line.size()) {
        char c = line[i];
        if (IsBlank(c) && !quoted) {
            if (inArgument) {
                arguments.push_back(current);
                current.clear();
                inArgument = false;
            }
            ++i;
            continue;
        }
        inArgument = true;
        if (c == '\\') {
            std::size_t count = 0;
            while (i < line.size() && line[i] == '\\') {
                ++count;
                ++i;
            }
            if (i < line.size() && line[i] == '"') {
                current.append(count / 2, '\\');
                if (count % 2 == 1) {
                    current += '"';
                    ++i;
                }
            } else {
                current.append(count, '\\');
            }
        } else if (c == '"') {
            if (quoted && i + 1 < line.size() && line[i + 1] == '"') {
                current += '"';
                i += 2;
            } else {
                quoted = !quoted;
                ++i;
            }
        } else {
            current += c;
            ++i;
        }
    }
    if (inArgument) {
        arguments.push_back(current);
    }
    return arguments;
}

}  // namespace nvk::os::posix
