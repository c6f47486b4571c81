#include "load_text.h"

#include "nvk/core/chaine.h"

namespace nvk {

CString LoadText(unsigned id) {
    Chaine text;
    text.LoadString(id);
    return CString(text.c_str(), text.Length());
}

}  // namespace nvk
