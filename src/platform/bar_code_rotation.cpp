#include "platform/bar_code_rotation.h"

namespace nvk {

namespace {

bool Within(os::LONG value, os::LONG low, os::LONG high) {
    return value >= low && value <= high;
}

}  // namespace

int DrawingRotation(os::LONG escapement, os::LONG orientation) {
    auto either = [&](os::LONG low, os::LONG high) {
        return Within(orientation, low, high) || Within(escapement, low, high);
    };
    if (either(1, 449)) {
        return 0;
    }
    if (either(450, 1349)) {
        return 2;
    }
    if (either(1350, 2249)) {
        return -1;
    }
    if (either(2250, 3149)) {
        return 1;
    }
    return 0;
}

int CheckingRotation(os::LONG orientation) {
    if (Within(orientation, 450, 1349)) {
        return 1;
    }
    if (Within(orientation, 1350, 2249)) {
        return -1;
    }
    if (Within(orientation, 2250, 3149)) {
        return 2;
    }
    return 0;
}

}  // namespace nvk
