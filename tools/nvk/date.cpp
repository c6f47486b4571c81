// nvk date: calendar dates as Julian day numbers, their parts, print forms
// and the foreign stamps they are read from.
#include <cstdint>
#include <iostream>
#include <string>

#include "calendar_args.h"
#include "cli.h"
#include "nvk/calendar/cbdate.h"

namespace nvk::tool {
namespace {

// The print form given before "-" holds for every line; a line may give its
// own.
std::string g_form = "3";

int Jday(const Args& args);
int Mdy(const Args& args);
int WeekDay(const Args& args);
int Print(const Args& args);
int Raima(const Args& args);
int Parse(const Args& args);

int PrintLines(const Args& args);

const Command kCommands[] = {
    {"jday", "MONTH DAY YEAR | -", "prints the day number of a date, 0 when it is none",
     PerLine<Jday>},
    {"mdy", "NUMBER | -", "prints the month, day and year of a day number", PerLine<Mdy>},
    {"weekday", "NUMBER | -", "prints the week day of a day number, 1 Monday to 7 Sunday",
     PerLine<WeekDay>},
    {"print", "NUMBER | - [--option K]", "prints a day number in print form K (0-4, default 3)",
     PrintLines},
    {"raima", "SECONDS | -", "prints the day number of a Raima time stamp, 0 when it is none",
     PerLine<Raima>},
    {"parse", "TEXT | -", "prints the day number of a text dd/mm/yyyy, 0 when it is none",
     PerLine<Parse>},
};

int PrintLines(const Args& input) {
    Args args = input;
    g_form = TakeOption(args, "--option", "3");
    return PerInput(args, Print);
}

int Answer(std::uint32_t dayNumber) {
    std::cout << dayNumber << '\n';
    return dayNumber != 0 ? kOk : kNegative;
}

int Jday(const Args& args) {
    std::uint32_t month, day, year;
    if (!Expect(args, 3, 3, kCommands[0]) || !ParseU32(args[0], month) || !ParseU32(args[1], day) ||
        !ParseU32(args[2], year)) {
        return kFailure;
    }
    return Answer(CBDate::Jday(month, day, year));
}

int Mdy(const Args& args) {
    CBDate date;
    if (!Expect(args, 1, 1, kCommands[1]) || !ParseDayNumber(args[0], date)) {
        return kFailure;
    }
    std::cout << date.Month() << ' ' << date.DayOfMonth() << ' ' << date.Year() << '\n';
    return kOk;
}

int WeekDay(const Args& args) {
    CBDate date;
    if (!Expect(args, 1, 1, kCommands[2]) || !ParseDayNumber(args[0], date)) {
        return kFailure;
    }
    std::cout << date.WeekDay() << '\n';
    return kOk;
}

int Print(const Args& input) {
    Args args = input;
    const std::string option = TakeOption(args, "--option", g_form);
    CBDate date;
    std::uint32_t form;
    if (!Expect(args, 1, 1, kCommands[3]) || !ParseDayNumber(args[0], date) ||
        !ParseU32(option, form)) {
        return kFailure;
    }
    const auto old = CBDate::SetPrintOption(static_cast<CBDate::HowToPrint>(form));
    std::cout << date.AsString().GetString() << '\n';
    CBDate::SetPrintOption(old);
    return kOk;
}

int Raima(const Args& args) {
    long long stamp;
    if (!Expect(args, 1, 1, kCommands[4])) {
        return kFailure;
    }
    if (!ParseLong(args[0], stamp) || stamp < INT32_MIN || stamp > INT32_MAX) {
        return Fail("not a 32-bit number of seconds: " + args[0]);
    }
    CBDate date;
    date.ConvertRaimaDate(static_cast<std::int32_t>(stamp));
    return Answer(date.Hash());
}

// The text's words are joined again, so that "05-03-2014 12:00" reads the
// same from the command line and from a line of input.
int Parse(const Args& args) {
    if (!Expect(args, 1, SIZE_MAX, kCommands[5])) {
        return kFailure;
    }
    std::string text = args[0];
    for (std::size_t i = 1; i < args.size(); ++i) {
        text += ' ' + args[i];
    }
    return Answer(CBDate(CString(text.c_str())).Hash());
}

void Demo(std::ostream& out) {
    const CBDate day(5, 3, 2014);
    out << "  5 March 2014 is day " << day.Hash() << ", week day " << day.WeekDay()
        << " (Wednesday)\n";
    out << "  printed in the five forms:";
    for (int form = CBDate::PrintMonthDayYear; form <= CBDate::PrintDayMonthYear; ++form) {
        const auto old = CBDate::SetPrintOption(static_cast<CBDate::HowToPrint>(form));
        out << " \"" << day.AsString().GetString() << '"';
        CBDate::SetPrintOption(old);
    }
    out << '\n';
    out << "  year 0 is 2000, fixed: 29/02/00 is day " << CBDate::Jday(2, 29, 0)
        << "; 29/02/1900 is none (" << CBDate::Jday(2, 29, 1900) << ")\n";
    const CBDate none(CString("5/3/2014"));
    out << "  no date has day 0, and still decomposes: " << none.Month() << ' ' << none.DayOfMonth()
        << ' ' << none.Year() << '\n';
}

const RegisterArea kArea({"date", "calendar dates as Julian day numbers", kCommands, Demo, 80});

}  // namespace
}  // namespace nvk::tool
