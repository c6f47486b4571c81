#include "calendar/month_names.h"

#include "nvk/context/loc.h"

namespace nvk {

// The names of the thread's locale as it stood at start-up.
CString MonthName(unsigned month) {
    if (month < 1 || month > 12) {
        return CString();
    }
    const PTableau<Chaine>& names = ELoc::Get().GetLocale().Cache().GetMonthNames(false);
    const int index = static_cast<int>(month) - 1;
    return index < names.Size() ? CString(names[index].c_str()) : CString();
}

}  // namespace nvk
