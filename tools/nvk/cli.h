// The command-line tool's frame: areas ("iban", "date", ...) register
// themselves, each with its commands and its part of the demo.
#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nvk::tool {

using Args = std::vector<std::string>;

// Exit statuses of every command.
inline constexpr int kOk = 0;        // success, or a positive answer
inline constexpr int kNegative = 1;  // a valid negative answer: invalid, not found
inline constexpr int kFailure = 2;   // bad usage or a failure

struct Command {
    std::string_view name;
    std::string_view usage;    // the arguments, as shown by --help
    std::string_view summary;  // one line
    int (*run)(const Args& args);
    // What the answers mean, shown by --help after the summary; may be empty.
    std::string_view answers = {};
};

struct Area {
    std::string_view name;
    std::string_view summary;
    std::span<const Command> commands;
    // Writes this area's part of `nvk demo`; may be null.
    void (*demo)(std::ostream& out);
    // Areas show in the help and the demo in this order.
    int order;
};

struct RegisterArea {
    explicit RegisterArea(const Area& area);
};

const std::vector<Area>& Areas();

// An area whose only command bears its name is that command: "nvk find ROOT".
bool IsCommandArea(const Area& area);

// Prints "nvk: message" on standard error and returns kFailure. While
// PerInput reads standard input, the message is the line's answer instead,
// "error: message" on standard output, so that answers stay paired with
// their inputs.
int Fail(std::string_view message);

// The area whose command runs, for the usage lines; set by main.
void SetCurrentArea(std::string_view area);

// Checks the argument count of a command, and that no argument is an option
// the command did not take; on a mismatch prints its usage and returns false.
bool Expect(const Args& args, std::size_t minimum, std::size_t maximum, const Command& command);

// Reads the next line of standard input, without its line end, as
// Windows-1252 text; false at the end of the input. For a line that cannot
// be converted, `line` is empty and `error` says why ("holds characters
// that ..."); `error` is empty otherwise.
bool ReadLine(std::string& line, std::string& error);

// The words of a line, split at white space.
Args Words(const std::string& line);

// Runs a session of commands read from standard input, one answer line for
// each command line: `answer` writes the answer to a line's words and gives
// an error, empty when the line was a command. A line that is none answers
// "error", says why on standard error, and the status is then 2. Blank lines
// are skipped.
int RunSession(
    const std::function<std::string(const Args& words, const std::string& line)>& answer);

// How PerInput hands a line of standard input to the answer.
enum class LineAs { Words, WholeText };

// Runs `answer` on the arguments, or, when the only argument is "-", on each
// line of standard input (as its words, or as one text), one answer line for
// each input line, blank lines and CR LF endings included. The status is the
// worst of the answers'.
int PerInput(const Args& args, int (*answer)(const Args& args), LineAs lineAs = LineAs::Words);
// Whether PerInput is reading standard input now.
bool ReadingInput();

// The value of "--name VALUE" in args, removed from them; `fallback` if absent.
std::string TakeOption(Args& args, std::string_view name, std::string fallback = {});
// Whether "--name" is present, removed from args.
bool TakeFlag(Args& args, std::string_view name);

// Takes every "--dico KEY=VALUE" out of args into the process dictionary, as
// an application states who it is; false, after the message, for a value
// without "=" or an empty key.
bool TakeDico(Args& args);
// Takes "--app-folder DIR" out of args: the folder that stands for the
// application's own, where Paths.ini lies (by default the tool's).
void TakeAppFolder(Args& args);

// Parses a whole decimal number; false on anything else.
bool ParseLong(const std::string& text, long long& value);

}  // namespace nvk::tool
