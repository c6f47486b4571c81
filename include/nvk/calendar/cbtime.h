// CBTime: a moment, counted in seconds of Greenwich time from the first second
// of 1 January 1901, 0 being no time; and bdTime, the four bytes in which
// database files hold a time. Local time comes from the zone read once at
// start-up and from the class's own daylight rule, the dates of the United
// States rule in force from 1987, whatever the zone.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

#include "nvk/afx/cstring.h"
#include "nvk/afx/object.h"
#include "nvk/calendar/cbdate.h"
#include "nvk/nvkutil_export.h"

// All four bytes 0xFF stand for no time.
struct bdTime {
    std::uint8_t hundredths;
    std::uint8_t seconds;
    std::uint8_t minutes;
    std::uint8_t hours;
};
static_assert(sizeof(bdTime) == 4);
static_assert(offsetof(bdTime, hundredths) == 0 && offsetof(bdTime, seconds) == 1 &&
              offsetof(bdTime, minutes) == 2 && offsetof(bdTime, hours) == 3);

class NVKUTIL_EXPORT CBTime : public CObject {
    DECLARE_DYNCREATE(CBTime)

public:
    // 1 January 1901, where the count starts.
    static const CBDate RefDate;
    // 5 February 2037, the last whole day the count reaches.
    static const CBDate MaxDate;
    // Stored for the applications; printing does not depend on it.
    static int PrintDateFlag;

    CBTime();  // now
    CBTime(const CBTime&) = default;
    CBTime& operator=(const CBTime&) = default;
    ~CBTime() override = default;
    explicit CBTime(std::uint32_t seconds) : m_Seconds(seconds) {}
    // A clock time on `date`. In the hour skipped when daylight time begins
    // the result is no time; the hour repeated when it ends reads as standard
    // time.
    CBTime(const CBDate& date, unsigned hour, unsigned minute, unsigned second);
    CBTime(unsigned hour, unsigned minute, unsigned second);  // today
    CBTime(const bdTime& record);                             // today, hundredths dropped
    // "hh:mm" or "hh:mm:ss" in fixed columns, today.
    CBTime(const CString& text);

    unsigned Hour() const { return LocalSecs() % 86400 / 3600; }
    unsigned Minute() const { return LocalSecs() % 86400 % 3600 / 60; }
    unsigned HourGMT() const { return m_Seconds % 86400 / 3600; }
    unsigned MinuteGMT() const { return m_Seconds % 86400 % 3600 / 60; }
    // Zones are whole minutes: there is no local second.
    unsigned Second() const { return m_Seconds % 86400 % 3600 % 60; }
    std::uint32_t Seconds() const { return m_Seconds; }
    std::uint32_t Hash() const { return m_Seconds; }
    bool IsValid() const { return m_Seconds != 0; }
    bool IsDST() const;
    bool Between(const CBTime& first, const CBTime& last) const {
        return first.m_Seconds <= m_Seconds && m_Seconds <= last.m_Seconds;
    }
    // 0 if equal, otherwise 1 whichever is the greater: callers that want an
    // order use the operators.
    int CompareTo(const CBTime& other) const { return m_Seconds == other.m_Seconds ? 0 : 1; }
    CBTime Max(const CBTime& other) const { return *this < other ? other : *this; }
    CBTime Min(const CBTime& other) const { return other < *this ? other : *this; }
    CString AsString() const;  // "hh:mm", local
    bdTime ToBtrTime() const;

    static CBTime BeginDST(unsigned year);
    static CBTime EndDST(unsigned year);
    // Returns the previous flag.
    static int PrintDate(int flag);
    static bool AssertDate(const CBDate& date) {
        return RefDate.Hash() <= date.Hash() && date.Hash() <= MaxDate.Hash();
    }

    bool operator==(const CBTime& other) const { return m_Seconds == other.m_Seconds; }
    std::strong_ordering operator<=>(const CBTime& other) const {
        return m_Seconds <=> other.m_Seconds;
    }
    // Seconds, unchecked.
    CBTime& operator+=(long seconds) {
        m_Seconds += static_cast<std::uint32_t>(seconds);
        return *this;
    }
    CBTime& operator-=(long seconds) {
        m_Seconds -= static_cast<std::uint32_t>(seconds);
        return *this;
    }
    CBTime& operator++() { return *this += 1; }
    CBTime& operator--() { return *this -= 1; }
    CBTime operator++(int) {
        CBTime old = *this;
        ++*this;
        return old;
    }
    CBTime operator--(int) {
        CBTime old = *this;
        --*this;
        return old;
    }

    // The count, as one little-endian 32-bit value.
    void Serialize(CArchive& ar) override;

private:
    std::uint32_t LocalSecs() const;
    // `hour` on `date` in the zone's standard time.
    static CBTime BuildLocal(const CBDate& date, unsigned hour);

    std::uint32_t m_Seconds;
};
