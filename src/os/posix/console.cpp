#include "os/api/console.h"

#include <unistd.h>

#include "os/posix/handle.h"

namespace nvk::os {

namespace {

// A standard stream: the process's descriptor, which the rest of the
// process writes through too, so closing its handle is refused.
class StdStream final : public posix::KernelObject {
public:
    explicit StdStream(int descriptor) : descriptor_(descriptor) {}
    int Descriptor() const override { return descriptor_; }
    bool Close() override {
        posix::SetErrorCode(ERROR_ACCESS_DENIED);
        return false;
    }

private:
    int descriptor_;
};

}  // namespace

HANDLE GetStdHandle(DWORD stdHandle) {
    static const HANDLE handles[3] = {posix::RegisterHandle(new StdStream(0)),
                                      posix::RegisterHandle(new StdStream(1)),
                                      posix::RegisterHandle(new StdStream(2))};
    switch (stdHandle) {
        case STD_INPUT_HANDLE:
            return handles[0];
        case STD_OUTPUT_HANDLE:
            return handles[1];
        case STD_ERROR_HANDLE:
            return handles[2];
        default:
            posix::SetErrorCode(ERROR_INVALID_PARAMETER);
            return INVALID_HANDLE_VALUE;
    }
}

BOOL GetConsoleMode(HANDLE console, LPDWORD mode) {
    const int descriptor = posix::DescriptorOf(console);
    if (descriptor < 0 || isatty(descriptor) == 0) {
        posix::SetErrorCode(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (mode != nullptr) {
        *mode = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;
    }
    return TRUE;
}

}  // namespace nvk::os
