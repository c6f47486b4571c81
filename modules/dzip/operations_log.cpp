#include "operations_log.h"

#include <cstdio>

#include "ansi_text.h"
#include "os/api/file.h"
#include "os/api/sync.h"
#include "os/api/time_zone.h"

namespace zipengine {

using namespace nvk::os;

namespace {

char const* Fallback(int id) {
    switch (id) {
        case 703:
            return "%s [Added]";
        case 704:
            return "%s [Deleted]";
        default:
            return "%s [Memory]";
    }
}

std::string Formatted(std::string const& format, std::string const& value) {
    char line[600];
    std::snprintf(line, sizeof(line), format.c_str(), value.c_str());
    return line;
}

}  // namespace

void OperationsLog::Add(int id, std::string const& name) {
    if ((m_job.Command().wZipSubOptions & ZSO_LOGZIPTOFILE) != 0) {
        m_lines.push_back(Formatted(m_job.Text(id, Fallback(id)), name));
    }
}

void OperationsLog::Write(std::string const& archive) const {
    if ((m_job.Command().wZipSubOptions & ZSO_LOGZIPTOFILE) == 0) {
        return;
    }
    std::string name = m_job.Text(701, "\\DZIPLOG.TXT");
    std::string path = WindowsForm(archive);
    std::size_t slash = path.find_last_of("\\/");
    std::string folder = slash == std::string::npos ? "." : path.substr(0, slash);
    HANDLE file =
        CreateFileA((folder + (name.starts_with('\\') ? "" : "\\") + name).c_str(), GENERIC_WRITE,
                    FILE_SHARE_READ, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    SetFilePointer(file, 0, nullptr, FILE_END);
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char date[64];
    std::snprintf(date, sizeof(date), "%02u/%02u/%04u %02u:%02u:%02u", now.wDay, now.wMonth,
                  now.wYear, now.wHour, now.wMinute, now.wSecond);
    std::string text = Formatted(m_job.Text(702, "--- ZIP Log - %s ---"), date) + "\r\n";
    for (std::string const& line : m_lines) {
        text += line + "\r\n";
    }
    DWORD written = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    CloseHandle(file);
}

}  // namespace zipengine
