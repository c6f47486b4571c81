#include "os/posix/command_line.h"

namespace nvk::os::posix {

namespace {

// Only blanks and tabs separate arguments, as in the C runtime of Windows; a
// line feed is part of an argument.
bool IsBlank(char c) {
    return c == ' ' || c == '\t';
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
    // The program's name is a path: quoted parts anywhere in it keep their
    // blanks, the quotes themselves go, and a backslash is only a backslash.
    std::string program;
    for (bool inQuotes = false; i < line.size() && (inQuotes || !IsBlank(line[i])); ++i) {
        if (line[i] == '"') {
            inQuotes = !inQuotes;
        } else {
            program += line[i];
        }
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
