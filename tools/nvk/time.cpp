// nvk time: moments as seconds of Greenwich time from 1 January 1901, read and
// shown in the local zone with the library's daylight rule.
#include <cstdint>
#include <iostream>
#include <string>

#include "calendar_args.h"
#include "cli.h"
#include "nvk/calendar/cbtime.h"

namespace nvk::tool {
namespace {

int Make(const Args& args);
int Show(const Args& args);

const Command kCommands[] = {
    {"make", "DAYNUMBER HOUR MINUTE SECOND | -",
     "prints the count of a local clock time, 0 when it is none", PerLine<Make>,
     "answers: the seconds from 1 January 1901, Greenwich time (exit 0), or 0 (exit 1) for a\n"
     "clock time that daylight time skips; dates outside 1901 to 5 February 2037 are an error."},
    {"show", "SECONDS | -", "prints hour, minute, second, daylight (0/1) and the printed time",
     PerLine<Show>},
};

int Make(const Args& args) {
    CBDate date;
    std::uint32_t hour, minute, second;
    if (!Expect(args, 4, 4, kCommands[0]) || !ParseDayNumber(args[0], date) ||
        !ParseU32(args[1], hour) || !ParseU32(args[2], minute) || !ParseU32(args[3], second)) {
        return kFailure;
    }
    // The count holds 1 January 1901 to 5 February 2037; outside, it would
    // wrap round to another moment.
    if (!CBTime::AssertDate(date)) {
        return Fail("the time holds dates from 1 January 1901 to 5 February 2037");
    }
    if (hour > 23 || minute > 59 || second > 59) {
        return Fail("hour, minute and second go up to 23, 59 and 59");
    }
    const CBTime time(date, hour, minute, second);
    std::cout << time.Seconds() << '\n';
    return time.IsValid() ? kOk : kNegative;
}

int Show(const Args& args) {
    std::uint32_t seconds;
    if (!Expect(args, 1, 1, kCommands[1]) || !ParseU32(args[0], seconds)) {
        return kFailure;
    }
    const CBTime time(seconds);
    std::cout << time.Hour() << ' ' << time.Minute() << ' ' << time.Second() << ' '
              << (time.IsDST() ? 1 : 0) << ' ' << time.AsString().GetString() << '\n';
    return kOk;
}

std::string TwoDigits(unsigned value) {
    return (value < 10 ? "0" : "") + std::to_string(value);
}

void Demo(std::ostream& out) {
    const unsigned year = 2026;
    const CBDate begin = CBDate(31, 3, year).Previous(7) + 7;
    const CBDate end = CBDate(31, 10, year).Previous(7);
    const CBTime noon(begin, 12, 0, 0);
    out << "  noon on " << begin.DayOfMonth() << "/04/" << year << " here is count "
        << noon.Seconds() << ", " << TwoDigits(noon.HourGMT()) << ':' << TwoDigits(noon.MinuteGMT())
        << " in Greenwich; daylight time " << (noon.IsDST() ? "yes" : "no") << '\n';
    const CBTime skipped(begin, 2, 30, 0);
    out << "  2:30 that night is "
        << (skipped.IsValid() ? "an ordinary time here"
                              : "no time here (count 0): daylight time skips it")
        << '\n';
    const CBTime repeated(end, 1, 30, 0);
    out << "  1:30 on " << end.DayOfMonth() << "/10/" << year << ", twice on a daylight clock, is "
        << TwoDigits(repeated.HourGMT()) << ':' << TwoDigits(repeated.MinuteGMT())
        << " in Greenwich, read as standard time\n";
}

const RegisterArea kArea({"time", "moments in seconds from 1901, local and Greenwich", kCommands,
                          Demo, 81});

}  // namespace
}  // namespace nvk::tool
