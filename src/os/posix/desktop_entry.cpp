// Two levels of escapes stand in an Exec value: each argument is quoted, with
// '"', '`', '$' and '\' escaped by a backslash and '%' doubled, and then the
// whole value, as every string value, has its backslashes doubled and its
// control characters escaped.
#include "os/posix/desktop_entry.h"

namespace nvk::os::posix {

namespace {

std::string EscapeValue(std::string_view value) {
    std::string out;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == ' ' && i == 0) {
            out += "\\s";
        } else {
            out += c;
        }
    }
    return out;
}

std::string UnescapeValue(std::string_view value) {
    std::string out;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const char c = value[++i];
        out += c == 's' ? ' ' : c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c;
    }
    return out;
}

std::string QuoteArgument(const std::string& argument) {
    std::string out = "\"";
    for (char c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            out += '\\';
        } else if (c == '%') {
            out += '%';
        }
        out += c;
    }
    return out + '"';
}

// The arguments of an unescaped Exec value; field codes are dropped.
std::vector<std::string> SplitCommand(std::string_view exec) {
    std::vector<std::string> arguments;
    std::size_t i = 0;
    while (i < exec.size()) {
        while (i < exec.size() && exec[i] == ' ') {
            ++i;
        }
        if (i == exec.size()) {
            break;
        }
        std::string argument;
        bool fieldCode = false;
        if (exec[i] == '"') {
            for (++i; i < exec.size() && exec[i] != '"'; ++i) {
                if (exec[i] == '\\' && i + 1 < exec.size()) {
                    ++i;
                } else if (exec[i] == '%' && i + 1 < exec.size() && exec[i + 1] == '%') {
                    ++i;
                }
                argument += exec[i];
            }
            ++i;
        } else {
            for (; i < exec.size() && exec[i] != ' '; ++i) {
                if (exec[i] == '%' && i + 1 < exec.size()) {
                    fieldCode = exec[i + 1] != '%';
                    ++i;
                    if (fieldCode) {
                        continue;
                    }
                }
                argument += exec[i];
            }
        }
        if (!fieldCode || !argument.empty()) {
            arguments.push_back(std::move(argument));
        }
    }
    return arguments;
}

}  // namespace

std::string WriteDesktopEntry(const DesktopEntry& entry) {
    std::string exec;
    for (const std::string& argument : entry.Command) {
        exec += (exec.empty() ? "" : " ") + QuoteArgument(argument);
    }
    std::string out = "[Desktop Entry]\nType=Application\nName=" + EscapeValue(entry.Name) + '\n';
    if (!entry.Comment.empty()) {
        out += "Comment=" + EscapeValue(entry.Comment) + '\n';
    }
    out += "Exec=" + EscapeValue(exec) + '\n';
    if (!entry.Icon.empty()) {
        out += "Icon=" + EscapeValue(entry.Icon) + '\n';
    }
    return out;
}

bool ReadDesktopEntry(std::string_view text, DesktopEntry& entry) {
    entry = DesktopEntry{};
    bool inGroup = false;
    bool hasExec = false;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (line.empty() || line[0] == '#') {
            continue;
        }
        if (line[0] == '[') {
            inGroup = line == "[Desktop Entry]";
            continue;
        }
        const std::size_t equal = line.find('=');
        if (!inGroup || equal == std::string_view::npos) {
            continue;
        }
        std::string_view key = line.substr(0, equal);
        while (!key.empty() && key.back() == ' ') {
            key.remove_suffix(1);
        }
        std::string_view value = line.substr(equal + 1);
        while (!value.empty() && value.front() == ' ') {
            value.remove_prefix(1);
        }
        if (key == "Name") {
            entry.Name = UnescapeValue(value);
        } else if (key == "Comment") {
            entry.Comment = UnescapeValue(value);
        } else if (key == "Icon") {
            entry.Icon = UnescapeValue(value);
        } else if (key == "Exec") {
            entry.Command = SplitCommand(UnescapeValue(value));
            hasExec = true;
        }
    }
    return hasExec && !entry.Command.empty();
}

}  // namespace nvk::os::posix
