// Windows writes dates with its own pattern letters (d, dd, ddd, dddd, M...,
// y..., tt), which ICU's patterns are turned into; numbers and names come as
// ICU has them, except where Windows' convention differs and is noted.
#include "os/posix/locale_items.h"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/dcfmtsym.h>
#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/ulocdata.h>

#include <cstdio>
#include <memory>

namespace nvk::os::posix {

namespace {

std::u16string Text(const icu::UnicodeString& text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text.getBuffer()),
                          static_cast<std::size_t>(text.length()));
}

LocaleItem Number(long value) {
    std::string digits = std::to_string(value);
    return {std::u16string(digits.begin(), digits.end()), true};
}

LocaleItem Plain(std::string_view text) {
    return {std::u16string(text.begin(), text.end()), false};
}

// An ICU date or time pattern in Windows' letters: weekday names E become d,
// years are four digits or two, day periods are tt, narrow and no-break
// spaces are blanks; quoted text stays.
std::u16string WindowsPattern(const icu::UnicodeString& pattern) {
    std::u16string in = Text(pattern);
    std::u16string out;
    for (std::size_t i = 0; i < in.size();) {
        char16_t c = in[i];
        std::size_t run = 1;
        while (i + run < in.size() && in[i + run] == c) {
            ++run;
        }
        if (c == u'\'') {
            std::size_t end = in.find(u'\'', i + 1);
            end = end == std::u16string::npos ? in.size() : end + 1;
            out.append(in, i, end - i);
            i = end;
            continue;
        }
        if (c == u'E' || c == u'c') {
            out.append(run >= 4 ? 4 : 3, u'd');
        } else if (c == u'y') {
            out.append(run == 2 ? 2 : 4, u'y');
        } else if (c == u'a') {
            out.append(u"tt");
        } else if (c == u'L') {
            out.append(run, u'M');
        } else if (c == u'\u202F' || c == u'\u00A0') {
            out.append(run, u' ');  // no byte for it; Windows writes a blank
        } else {
            out.append(run, c);
        }
        i += run;
    }
    return out;
}

std::u16string DatePattern(const icu::Locale& locale, icu::DateFormat::EStyle style, bool time) {
    std::unique_ptr<icu::DateFormat> format(
        time ? icu::DateFormat::createTimeInstance(style, locale)
             : icu::DateFormat::createDateInstance(style, locale));
    auto* simple = dynamic_cast<icu::SimpleDateFormat*>(format.get());
    if (simple == nullptr) {
        return {};
    }
    icu::UnicodeString pattern;
    simple->toPattern(pattern);
    std::u16string windows = WindowsPattern(pattern);
    if (!time && style == icu::DateFormat::kShort) {
        // Windows' short dates show the century.
        std::size_t y = windows.find(u"yy");
        if (y != std::u16string::npos && windows.compare(y, 4, u"yyyy") != 0) {
            windows.replace(y, 2, u"yyyy");
        }
    }
    return windows;
}

// The first character of a pattern that is no pattern letter.
std::u16string Separator(const std::u16string& pattern) {
    for (char16_t c : pattern) {
        if (!((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'))) {
            return std::u16string(1, c);
        }
    }
    return {};
}

// 0 month-day-year, 1 day-month-year, 2 year-month-day.
long DateOrder(const std::u16string& pattern) {
    std::size_t d = pattern.find(u'd');
    std::size_t m = pattern.find(u'M');
    std::size_t y = pattern.find(u'y');
    if (y < m && y < d) {
        return 2;
    }
    return m < d ? 0 : 1;
}

icu::UnicodeString Symbol(const icu::Locale& locale,
                          icu::DecimalFormatSymbols::ENumberFormatSymbol symbol) {
    UErrorCode status = U_ZERO_ERROR;
    icu::DecimalFormatSymbols symbols(locale, status);
    icu::UnicodeString text = symbols.getSymbol(symbol);
    // The narrow no-break space of some group separators has no byte in the
    // ANSI code page; Windows writes a no-break space there.
    text.findAndReplace(icu::UnicodeString(u"\u202F"), icu::UnicodeString(u"\u00A0"));
    return text;
}

std::optional<LocaleItem> Names(const icu::Locale& locale, LCTYPE type) {
    UErrorCode status = U_ZERO_ERROR;
    icu::DateFormatSymbols symbols(locale, status);
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    int32_t count = 0;
    using Symbols = icu::DateFormatSymbols;
    if (type >= LOCALE_SMONTHNAME1 && type < LOCALE_SMONTHNAME1 + 12) {
        const icu::UnicodeString* months =
            symbols.getMonths(count, Symbols::STANDALONE, Symbols::WIDE);
        return LocaleItem{Text(months[type - LOCALE_SMONTHNAME1]), false};
    }
    if (type >= LOCALE_SABBREVMONTHNAME1 && type < LOCALE_SABBREVMONTHNAME1 + 12) {
        const icu::UnicodeString* months =
            symbols.getMonths(count, Symbols::STANDALONE, Symbols::ABBREVIATED);
        return LocaleItem{Text(months[type - LOCALE_SABBREVMONTHNAME1]), false};
    }
    // Windows counts days from Monday, ICU from Sunday at index 1.
    if (type >= LOCALE_SDAYNAME1 && type < LOCALE_SDAYNAME1 + 7) {
        const icu::UnicodeString* days =
            symbols.getWeekdays(count, Symbols::STANDALONE, Symbols::WIDE);
        return LocaleItem{Text(days[(type - LOCALE_SDAYNAME1 + 1) % 7 + 1]), false};
    }
    if (type >= LOCALE_SABBREVDAYNAME1 && type < LOCALE_SABBREVDAYNAME1 + 7) {
        const icu::UnicodeString* days =
            symbols.getWeekdays(count, Symbols::STANDALONE, Symbols::ABBREVIATED);
        return LocaleItem{Text(days[(type - LOCALE_SABBREVDAYNAME1 + 1) % 7 + 1]), false};
    }
    if (type == LOCALE_S1159 || type == LOCALE_S2359) {
        const icu::UnicodeString* periods = symbols.getAmPmStrings(count);
        return LocaleItem{Text(periods[type == LOCALE_S1159 ? 0 : 1]), false};
    }
    return std::nullopt;
}

std::optional<LocaleItem> Calendar(const icu::Locale& locale, LCTYPE type) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(locale, status));
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    if (type == LOCALE_IFIRSTDAYOFWEEK) {
        // 0 is Monday here, UCAL_SUNDAY is 1 there.
        return Number((calendar->getFirstDayOfWeek(status) + 5) % 7);
    }
    switch (calendar->getMinimalDaysInFirstWeek()) {
        case 1:
            return Number(0);
        case 7:
            return Number(1);
        default:
            return Number(2);
    }
}

}  // namespace

std::optional<LocaleItem> LocaleItemOf(const char* icuName, LCID lcid, LCTYPE type,
                                       const char* displayName) {
    icu::Locale locale(icuName);
    icu::Locale display(displayName);
    icu::UnicodeString text;
    switch (type) {
        case LOCALE_ILANGUAGE: {
            char hex[8];
            std::snprintf(hex, sizeof hex, "%04x", static_cast<unsigned>(lcid & 0xFFFF));
            return Plain(hex);
        }
        case LOCALE_SLANGUAGE:
            return LocaleItem{Text(locale.getDisplayLanguage(display, text)), false};
        case LOCALE_SENGLANGUAGE:
            return LocaleItem{Text(locale.getDisplayLanguage(icu::Locale::getUS(), text)), false};
        case LOCALE_SNATIVELANGNAME:
            return LocaleItem{Text(locale.getDisplayLanguage(locale, text)), false};
        case LOCALE_SABBREVLANGNAME: {
            std::string code = locale.getISO3Language();
            for (char& c : code) {
                c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
            }
            return Plain(code);
        }
        case LOCALE_SCOUNTRY:
            return LocaleItem{Text(locale.getDisplayCountry(display, text)), false};
        case LOCALE_SENGCOUNTRY:
            return LocaleItem{Text(locale.getDisplayCountry(icu::Locale::getUS(), text)), false};
        case LOCALE_SNATIVECTRYNAME:
            return LocaleItem{Text(locale.getDisplayCountry(locale, text)), false};
        case LOCALE_SABBREVCTRYNAME:
            return Plain(locale.getISO3Country());
        case LOCALE_SISO639LANGNAME:
            return Plain(locale.getLanguage());
        case LOCALE_SISO3166CTRYNAME:
            return Plain(locale.getCountry());
        case LOCALE_SNAME: {
            std::string name = locale.getLanguage();
            if (locale.getCountry()[0] != '\0') {
                name += std::string("-") + locale.getCountry();
            }
            return Plain(name);
        }
        case LOCALE_IDEFAULTANSICODEPAGE:
            return Number(AnsiCodePageOf(lcid));
        case LOCALE_IDEFAULTCODEPAGE:
            return Number(850);
        case LOCALE_ICALENDARTYPE:
            return Number(1);  // Gregorian, localised
        case LOCALE_SMONTHNAME13:
            return Plain("");
        case LOCALE_IMEASURE: {
            UErrorCode status = U_ZERO_ERROR;
            UMeasurementSystem system = ulocdata_getMeasurementSystem(icuName, &status);
            return Number(system == UMS_US ? 1 : 0);
        }
        case LOCALE_SDECIMAL:
            return LocaleItem{
                Text(Symbol(locale, icu::DecimalFormatSymbols::kDecimalSeparatorSymbol)), false};
        case LOCALE_STHOUSAND:
            return LocaleItem{
                Text(Symbol(locale, icu::DecimalFormatSymbols::kGroupingSeparatorSymbol)), false};
        case LOCALE_SLIST:
            // A list separator differs from the decimal separator.
            return Plain(Symbol(locale, icu::DecimalFormatSymbols::kDecimalSeparatorSymbol) ==
                                 icu::UnicodeString(u",")
                             ? ";"
                             : ",");
        case LOCALE_SCURRENCY:
            return LocaleItem{Text(Symbol(locale, icu::DecimalFormatSymbols::kCurrencySymbol)),
                              false};
        case LOCALE_SINTLSYMBOL:
            return LocaleItem{Text(Symbol(locale, icu::DecimalFormatSymbols::kIntlCurrencySymbol)),
                              false};
        case LOCALE_IDIGITS:
        case LOCALE_ICURRDIGITS:
            return Number(2);
        case LOCALE_ILZERO:
            return Number(1);
        case LOCALE_SPOSITIVESIGN:
            return Plain("");
        case LOCALE_SNEGATIVESIGN:
            return Plain("-");
        case LOCALE_SSHORTDATE:
            return LocaleItem{DatePattern(locale, icu::DateFormat::kShort, false), false};
        case LOCALE_SLONGDATE:
            return LocaleItem{DatePattern(locale, icu::DateFormat::kFull, false), false};
        case LOCALE_STIMEFORMAT:
            return LocaleItem{DatePattern(locale, icu::DateFormat::kMedium, true), false};
        case LOCALE_SDATE:
            return LocaleItem{Separator(DatePattern(locale, icu::DateFormat::kShort, false)),
                              false};
        case LOCALE_STIME:
            return LocaleItem{Separator(DatePattern(locale, icu::DateFormat::kMedium, true)),
                              false};
        case LOCALE_IDATE:
            return Number(DateOrder(DatePattern(locale, icu::DateFormat::kShort, false)));
        case LOCALE_ICENTURY:
            return Number(1);
        case LOCALE_IDAYLZERO:
            return Number(DatePattern(locale, icu::DateFormat::kShort, false).find(u"dd") !=
                          std::u16string::npos);
        case LOCALE_IMONLZERO:
            return Number(DatePattern(locale, icu::DateFormat::kShort, false).find(u"MM") !=
                          std::u16string::npos);
        case LOCALE_IFIRSTDAYOFWEEK:
        case LOCALE_IFIRSTWEEKOFYEAR:
            return Calendar(locale, type);
        default:
            return Names(locale, type);
    }
}

UINT AnsiCodePageOf(LCID lcid) {
    const auto language = static_cast<WORD>(lcid & 0xFFFF);
    // Languages written in two scripts take the code page of the script.
    switch (language) {
        case 0x0C1A:  // Serbian, Cyrillic
        case 0x201A:  // Bosnian, Cyrillic
        case 0x082C:  // Azeri, Cyrillic
        case 0x0843:  // Uzbek, Cyrillic
            return 1251;
        case 0x042C:  // Azeri, Latin
        case 0x0443:  // Uzbek, Latin
            return 1254;
        case 0x0804:  // Chinese, PRC
        case 0x1004:  // Chinese, Singapore
            return 936;
        case 0x0404:  // Chinese, Taiwan
        case 0x0C04:  // Chinese, Hong Kong
        case 0x1404:  // Chinese, Macao
            return 950;
        default:
            break;
    }
    switch (language & 0x3FF) {
        case 0x05:  // Czech
        case 0x0E:  // Hungarian
        case 0x15:  // Polish
        case 0x18:  // Romanian
        case 0x1A:  // Croatian, Serbian and Bosnian in Latin script
        case 0x1B:  // Slovak
        case 0x1C:  // Albanian
        case 0x24:  // Slovenian
        case 0x2E:  // Sorbian
            return 1250;
        case 0x02:  // Bulgarian
        case 0x19:  // Russian
        case 0x22:  // Ukrainian
        case 0x23:  // Belarusian
        case 0x28:  // Tajik
        case 0x2F:  // Macedonian
        case 0x3F:  // Kazakh
        case 0x40:  // Kyrgyz
        case 0x44:  // Tatar
        case 0x50:  // Mongolian
        case 0x6D:  // Bashkir
        case 0x85:  // Yakut
            return 1251;
        case 0x08:  // Greek
            return 1253;
        case 0x1F:  // Turkish
        case 0x2C:  // Azeri
        case 0x43:  // Uzbek
            return 1254;
        case 0x0D:  // Hebrew
        case 0x3D:  // Yiddish
            return 1255;
        case 0x01:  // Arabic
        case 0x20:  // Urdu
        case 0x29:  // Persian
        case 0x80:  // Uyghur
        case 0x8C:  // Dari
            return 1256;
        case 0x25:  // Estonian
        case 0x26:  // Latvian
        case 0x27:  // Lithuanian
            return 1257;
        case 0x2A:  // Vietnamese
            return 1258;
        case 0x1E:  // Thai
            return 874;
        case 0x11:  // Japanese
            return 932;
        case 0x12:  // Korean
            return 949;
        case 0x04:  // Chinese
            return 936;
        // Languages that Windows writes in Unicode only.
        case 0x2B:  // Armenian
        case 0x37:  // Georgian
        case 0x39:  // Hindi
        case 0x45:  // Bengali
        case 0x46:  // Punjabi
        case 0x47:  // Gujarati
        case 0x48:  // Odia
        case 0x49:  // Tamil
        case 0x4A:  // Telugu
        case 0x4B:  // Kannada
        case 0x4C:  // Malayalam
        case 0x4D:  // Assamese
        case 0x4E:  // Marathi
        case 0x4F:  // Sanskrit
        case 0x51:  // Tibetan
        case 0x53:  // Khmer
        case 0x54:  // Lao
        case 0x57:  // Konkani
        case 0x5A:  // Syriac
        case 0x5B:  // Sinhala
        case 0x5E:  // Amharic
        case 0x61:  // Nepali
        case 0x65:  // Divehi
            return 0;
        default:
            return 1252;
    }
}

}  // namespace nvk::os::posix
