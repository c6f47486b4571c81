// Runs the unzip engine over any bytes as an archive: counting and member
// information, testing every member, and extracting the first one to memory.
// Whatever the bytes, each answer is one of the engine's codes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "dunzip/engine.h"
#include "nvk/archive/unzip_engine.h"

namespace {

bool IsCode(int code) {
    switch (code) {
        case 0:
        case 2:
        case 3:
        case 4:
        case 5:
        case 9:
        case 11:
        case 12:
        case 25:
        case 28:
        case 29:
        case 39:
        case 40:
        case 41:
        case 42:
        case 44:
        case 45:
        case 46:
        case 47:
        case 48:
        case 49:
        case 50:
            return true;
        default:
            return false;
    }
}

int Run(UNZIPCMDSTRUCT command, const uint8_t* data, size_t size) {
    auto input = nvk::unzip::MemoryInput(data, size);
    int code = nvk::unzip::Run(command, *input);
    if (!IsCode(code)) {
        std::abort();
    }
    return code;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    UNZIPCMDSTRUCT command;
    std::memset(static_cast<void*>(&command), 0, sizeof command);
    command.unzipStructSize = kUnzipCmdStructSize;
    char all[] = "*";
    char password[] = "secret";
    command.lpszFilespec = all;
    command.decryptFlag = 1;
    command.lpszDecryptCode = password;
    command.lResv1 = 8;  // megabytes: enough for the corpus, small for a bomb

    command.function = nvk::unzip::kCountAll;
    Run(command, data, size);
    nvk::unzip::UnzipMemberInfo info{};
    command.zInfo = &info;
    command.function = nvk::unzip::kIndexedInfo;
    for (int i = 0; i < 8; ++i) {
        command.index = i;
        if (Run(command, data, size) != 0) {
            break;
        }
        if (std::memchr(info.szFileName, 0, sizeof info.szFileName) == nullptr) {
            std::abort();
        }
    }
    command.function = nvk::unzip::kCommentSize;
    Run(command, data, size);
    command.function = nvk::unzip::kTestNamed;
    Run(command, data, size);
    std::vector<char> block(1 << 16);
    command.function = nvk::unzip::kFileToMemory;
    command.lpMemBlock = block.data();
    command.lMemBlockSize = static_cast<nvk::os::LONG>(block.size());
    if (Run(command, data, size) == 0 && command.returnCount > static_cast<int>(block.size())) {
        std::abort();
    }
    return 0;
}
