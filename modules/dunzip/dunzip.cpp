// The module's entry: the command record in, a return code out.
#include <cerrno>

#include "engine.h"
#include "nvk/archive/unzip_engine.h"

extern "C" __attribute__((visibility("default"))) int dunzip(UNZIPCMDSTRUCT* command) {
    using namespace nvk::unzip;
    if (command == nullptr) {
        return kUnzipBadCommand;
    }
    if (command->unzipStructSize != kUnzipCmdStructSize) {
        return kUnzipBadCommand;
    }
    if (command->lpszZIPFile == nullptr || command->lpszZIPFile[0] == '\0') {
        return kUnzipBadCommand;
    }
    int error = 0;
    auto input = FileInput(NativePath(command->lpszZIPFile), &error);
    if (input == nullptr) {
        return error == ENOENT || error == ENOTDIR ? kUnzipNothingFound : kUnzipOpenFailed;
    }
    return Run(*command, *input);
}
