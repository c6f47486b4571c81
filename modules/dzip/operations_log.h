// The operations log "\DZIPLOG.TXT" that wZipSubOptions' ZSO_LOGZIPTOFILE
// asks for: a header with the date, then one line for each entry added,
// deleted or written from memory, appended in the archive's folder.
#pragma once

#include <string>
#include <vector>

#include "job.h"

namespace zipengine {

class OperationsLog {
public:
    explicit OperationsLog(Job& job) : m_job(job) {}
    // `id` is the format of the line: 703 added, 704 deleted, 705 memory.
    void Add(int id, std::string const& name);
    void Write(std::string const& archive) const;

private:
    Job& m_job;
    std::vector<std::string> m_lines;
};

}  // namespace zipengine
