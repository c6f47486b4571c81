#include "os/api/error_mode.h"

#include <atomic>

namespace nvk::os {

UINT SetErrorMode(UINT mode) {
    static std::atomic<UINT> current{0};
    return current.exchange(mode);
}

}  // namespace nvk::os
