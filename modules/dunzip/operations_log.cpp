#include "operations_log.h"

#include <cstring>
#include <ctime>

#include "nvk/archive/unzip_engine.h"
#include "safe_output.h"
#include "texts.h"

namespace nvk::unzip {

OperationsLog::OperationsLog(const UNZIPCMDSTRUCT& command, const std::string& folder)
    : m_Command(command) {
    if ((command.wUnzipSubOptions & kUnzipLogOperations) == 0) {
        return;
    }
    std::string name = Message(command, 143, "\\DUNZLOG.TXT");
    while (!name.empty() && (name.front() == '\\' || name.front() == '/')) {
        name.erase(0, 1);
    }
    m_File = std::fopen(
        (folder +
         (folder.empty() || std::strchr(kNativeSeparators, folder.back()) != nullptr ? "" : "/") +
         name)
            .c_str(),
        "ab");
    if (m_File == nullptr) {
        return;
    }
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    char when[32];
    std::strftime(when, sizeof when, "%d/%m/%Y %H:%M:%S", &parts);
    std::string header =
        Substitute(Message(command, 144, "--- DynaZIP UnZIP Log - %s ---"), {when});
    std::fprintf(m_File, "%s\r\n", header.c_str());
}

OperationsLog::~OperationsLog() {
    if (m_File != nullptr) {
        std::fclose(m_File);
    }
}

void OperationsLog::Line(int id, const char* fallback, const std::string& name) {
    if (m_File != nullptr) {
        std::string line = Substitute(Message(m_Command, id, fallback), {name});
        std::fprintf(m_File, "%s\r\n", line.c_str());
    }
}

}  // namespace nvk::unzip
