#include "safe_output.h"

#include <atomic>

#include "os/api/sync.h"

namespace nvk::unzip {

namespace {

std::atomic<unsigned> g_counter{0};

}  // namespace

std::vector<std::string> SafeComponents(const std::string& name) {
    std::vector<std::string> parts;
    if (name.empty() || name[0] == '/' || name[0] == '\\') {
        return {};
    }
    std::string part;
    for (std::size_t i = 0; i <= name.size(); ++i) {
        char c = i < name.size() ? name[i] : '/';
        if (c != '/' && c != '\\') {
            part += c;
            continue;
        }
        if (part == "..") {
            return {};
        }
        // A drive ("C:") or any colon would name another place on Windows.
        if (part.find(':') != std::string::npos || part.find('\0') != std::string::npos) {
            return {};
        }
        if (!part.empty() && part != ".") {
            if (!FitsDisk(part)) {
                return {};
            }
            parts.push_back(part);
        }
        part.clear();
    }
    return parts;
}

Destination::Status Destination::MakeFolders(const std::vector<std::string>& components,
                                             std::size_t count) {
    Status status = Status::Ok;
    OpenFolder(components, count, true, &status);
    return status;
}

int Destination::Existing(const std::vector<std::string>& components, std::time_t* modified) {
    Status status = Status::Ok;
    FolderPtr folder = OpenFolder(components, components.size() - 1, false, &status);
    if (folder == nullptr) {
        return status == Status::Refused ? 1 : -1;
    }
    return Kind(*folder, components.back(), modified);
}

Destination::Status Destination::Create(const std::vector<std::string>& components, File& file) {
    Status status = Status::Ok;
    FolderPtr folder = OpenFolder(components, components.size() - 1, true, &status);
    if (folder == nullptr) {
        return status;
    }
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string temporary = ".dunzip-" + std::to_string(os::GetCurrentProcessId()) + "-" +
                                std::to_string(g_counter.fetch_add(1));
        bool exists = false;
        std::intptr_t handle = CreateNew(*folder, temporary, &exists);
        if (handle != -1) {
            file.m_Folder = std::move(folder);
            file.m_Handle = handle;
            file.m_Temporary = temporary;
            file.m_Name = components.back();
            return Status::Ok;
        }
        if (!exists) {
            break;
        }
    }
    return Status::Failed;
}

Destination::File::File(File&& other) noexcept
    : m_Folder(std::move(other.m_Folder)),
      m_Handle(other.m_Handle),
      m_Temporary(std::move(other.m_Temporary)),
      m_Name(std::move(other.m_Name)) {
    other.m_Handle = -1;
}

}  // namespace nvk::unzip
