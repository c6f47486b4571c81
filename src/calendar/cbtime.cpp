#include "nvk/calendar/cbtime.h"

#include <cstdlib>

#include "nvk/afx/archive.h"
#include "os/api/time_zone.h"

IMPLEMENT_DYNCREATE(CBTime, CObject)

using nvk::os::SYSTEMTIME;

namespace {

// The zone is fixed once, as the module starts, before the dates below are
// built; a later change of TZ has no effect on the class.
[[maybe_unused]] const bool g_zoneRead = (nvk::os::_tzset(), true);

// The day number of 1 January 1901. Kept apart from RefDate so that a
// CBTime built during another file's start-up does not meet it unbuilt.
constexpr std::uint32_t kRefDay = 2415386;
constexpr std::uint32_t kSecondsPerDay = 86400;
constexpr std::uint32_t kSecondsPerHour = 3600;

// Added to a Greenwich count to make it local standard time's, and back.
std::uint32_t ZoneSeconds() {
    long seconds = 0;
    nvk::os::_get_timezone(&seconds);
    return static_cast<std::uint32_t>(seconds);
}

bool ZoneHasDaylight() {
    int hours = 0;
    nvk::os::_get_daylight(&hours);
    return hours != 0;
}

SYSTEMTIME LocalNow() {
    SYSTEMTIME now{};
    nvk::os::GetLocalTime(&now);
    return now;
}

}  // namespace

const CBDate CBTime::RefDate(0, 0);
const CBDate CBTime::MaxDate(49709, 0);
int CBTime::PrintDateFlag = 0;

CBTime::CBTime() {
    const SYSTEMTIME now = LocalNow();
    *this = CBTime(CBDate(now.wDay, now.wMonth, now.wYear), now.wHour, now.wMinute, now.wSecond);
}

// The clock time is first placed one hour early, so that the daylight state
// on both sides of it shows whether it falls in a skipped or repeated hour.
CBTime::CBTime(const CBDate& date, unsigned hour, unsigned minute, unsigned second) : m_Seconds(0) {
    if (!date.IsValid()) {
        return;
    }
    std::uint32_t v = (((date.Hash() - kRefDay) * 24 + hour - 1) * 60 + minute) * 60 + second;
    if (v != 0) {
        v += ZoneSeconds();
    }
    const bool before = CBTime(v).IsDST();
    v += kSecondsPerHour;
    const bool after = CBTime(v).IsDST();
    if (before && after) {
        v -= kSecondsPerHour;  // a daylight clock time
    } else if (!before && after) {
        v = 0;  // the hour skipped when daylight time begins
    }
    // Otherwise standard time, the repeated hour at the end of daylight time
    // included.
    m_Seconds = v;
}

CBTime::CBTime(unsigned hour, unsigned minute, unsigned second)
    : CBTime(CBDate(), hour, minute, second) {}

CBTime::CBTime(const bdTime& record)
    : CBTime(CBDate(), record.hours, record.minutes, record.seconds) {}

namespace {

unsigned Field(const CString& text, int first) {
    return static_cast<unsigned>(std::atoi(text.Mid(first, 2)));
}

}  // namespace

// Separators are not checked; missing pieces read 0.
CBTime::CBTime(const CString& text)
    : CBTime(CBDate(), Field(text, 0), Field(text, 3), text.GetLength() == 5 ? 0 : Field(text, 6)) {
}

CBTime CBTime::BuildLocal(const CBDate& date, unsigned hour) {
    return CBTime(((date.Hash() - kRefDay) * 24 + hour) * kSecondsPerHour + ZoneSeconds());
}

// The day is a Sunday: the first of April from 1987, before that the last of
// April, with the two years of the energy crisis apart.
CBTime CBTime::BeginDST(unsigned year) {
    CBDate day;
    if (year > 1986) {
        day = CBDate(31, 3, year).Previous(7) + 7;
    } else if (year == 1974) {
        day = CBDate(6, 1, year);
    } else if (year == 1975) {
        day = CBDate(23, 2, year);
    } else {
        day = CBDate(30, 4, year).Previous(7);
    }
    return BuildLocal(day, 2);
}

// Hour 1 of standard time is 2:00 on the daylight clock.
CBTime CBTime::EndDST(unsigned year) {
    return BuildLocal(CBDate(31, 10, year).Previous(7), 1);
}

bool CBTime::IsDST() const {
    if (!ZoneHasDaylight()) {
        return false;
    }
    const unsigned year = CBDate(m_Seconds / kSecondsPerDay, 0).Year();
    return BeginDST(year).m_Seconds <= m_Seconds && m_Seconds < EndDST(year).m_Seconds;
}

// The daylight test is made on the shifted count, not on the true moment.
std::uint32_t CBTime::LocalSecs() const {
    const std::uint32_t local = m_Seconds - ZoneSeconds();
    return CBTime(local).IsDST() ? local + kSecondsPerHour : local;
}

int CBTime::PrintDate(int flag) {
    const int old = PrintDateFlag;
    PrintDateFlag = flag;
    return old;
}

CString CBTime::AsString() const {
    CString text;
    text.Format("%02d:%02d", Hour(), Minute());
    return text;
}

bdTime CBTime::ToBtrTime() const {
    if (!IsValid()) {
        return {0xFF, 0xFF, 0xFF, 0xFF};
    }
    return {0, static_cast<std::uint8_t>(Second()), static_cast<std::uint8_t>(Minute()),
            static_cast<std::uint8_t>(Hour())};
}

void CBTime::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar << static_cast<unsigned>(m_Seconds);
    } else {
        unsigned seconds = 0;
        ar >> seconds;
        m_Seconds = seconds;
    }
}
