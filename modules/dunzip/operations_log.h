// The operations log that kUnzipLogOperations asks for: its name, header and
// lines are the caller's messages 143 to 149.
#pragma once

#include <cstdio>
#include <string>

#include "nvk/archive/unzip_cmd.h"

namespace nvk::unzip {

class OperationsLog {
public:
    // Opens the log in `folder` (a native path ending in '/') when the record
    // asks for it, and writes its header.
    OperationsLog(const UNZIPCMDSTRUCT& command, const std::string& folder);
    ~OperationsLog();
    OperationsLog(const OperationsLog&) = delete;
    OperationsLog& operator=(const OperationsLog&) = delete;

    void Line(int id, const char* fallback, const std::string& name);

private:
    const UNZIPCMDSTRUCT& m_Command;
    std::FILE* m_File = nullptr;
};

}  // namespace nvk::unzip
