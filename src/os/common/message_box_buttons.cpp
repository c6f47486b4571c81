// The answer of a message box that nobody sees, on every platform.
#include <span>

#include "os/api/message_box.h"

namespace nvk::os {

namespace {

// The answers of each style's buttons, left to right (IDOK 1 ... IDCONTINUE 11).
std::span<const int> Buttons(UINT type) {
    static constexpr int kOk[] = {1};
    static constexpr int kOkCancel[] = {1, 2};
    static constexpr int kAbortRetryIgnore[] = {3, 4, 5};
    static constexpr int kYesNoCancel[] = {6, 7, 2};
    static constexpr int kYesNo[] = {6, 7};
    static constexpr int kRetryCancel[] = {4, 2};
    static constexpr int kCancelTryContinue[] = {2, 10, 11};
    switch (type & 0xF) {
        case 1:
            return kOkCancel;
        case 2:
            return kAbortRetryIgnore;
        case 3:
            return kYesNoCancel;
        case 4:
            return kYesNo;
        case 5:
            return kRetryCancel;
        case 6:
            return kCancelTryContinue;
        default:
            return kOk;
    }
}

}  // namespace

int MessageBoxDefaultButton(UINT type) {
    const std::span<const int> buttons = Buttons(type);
    const std::size_t index = (type & 0xF00) >> 8;
    return buttons[index < buttons.size() ? index : 0];
}

}  // namespace nvk::os
