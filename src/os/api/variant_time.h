// OLE automation dates: a double counting days from 30 December 1899, whose
// fraction is the time of day. Before that day the integer part is negative
// and the fraction still counts forward from midnight: -1.25 is 29 December
// 1899 at 06:00. Dates run from 1 January 100 to 31 December 9999.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Non-zero on success; fails for a field out of range (month 1-12, day 0-31,
// hour below 24, minute and second below 60) or a date outside the range.
// Day 0 is the last day of the month before, and a day past the end of its
// month runs into the next one. Milliseconds are ignored.
int SystemTimeToVariantTime(const SYSTEMTIME* time, double* variant);
// Non-zero on success; fails outside the range of dates. The time is rounded
// to the nearest second, milliseconds are 0 and the week day is filled in.
int VariantTimeToSystemTime(double variant, SYSTEMTIME* time);

}  // namespace nvk::os
