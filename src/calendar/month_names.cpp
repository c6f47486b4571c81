#include "calendar/month_names.h"

namespace nvk {

CString MonthName(unsigned month) {
    static const char* const kNames[12] = {"January",   "February", "March",    "April",
                                           "May",       "June",     "July",     "August",
                                           "September", "October",  "November", "December"};
    return month >= 1 && month <= 12 ? CString(kNames[month - 1]) : CString();
}

}  // namespace nvk
