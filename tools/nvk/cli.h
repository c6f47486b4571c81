// The command-line tool's frame: areas ("iban", "date", ...) register
// themselves, each with its commands and its part of the demo.
#pragma once

#include <cstddef>
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

// Prints "nvk: message" on standard error and returns kFailure.
int Fail(std::string_view message);

// Checks the argument count of a command; on a mismatch prints its usage and
// returns false.
bool Expect(const Args& args, std::size_t minimum, std::size_t maximum, const Command& command);

// Runs `answer` on the arguments, or, when the only argument is "-", on the
// words of each line of standard input, one answer a line. The status is the
// worst of the answers'.
int PerInput(const Args& args, int (*answer)(const Args& args));

// The value of "--name VALUE" in args, removed from them; `fallback` if absent.
std::string TakeOption(Args& args, std::string_view name, std::string fallback = {});
// Whether "--name" is present, removed from args.
bool TakeFlag(Args& args, std::string_view name);

// Parses a whole decimal number; false on anything else.
bool ParseLong(const std::string& text, long long& value);

}  // namespace nvk::tool
