// Helpers shared by the storage tests: temporary files, and an index file
// whose file and header the tests may look at.
#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "nvk/storage/base_file.h"
#include "nvk/storage/data_file.h"
#include "nvk/storage/index_file.h"
#include "os/api/sync.h"
#include "storage/index_check.h"

namespace nvk::test {

// A path in a fresh temporary folder, removed with the object.
class TempPath {
public:
    explicit TempPath(const std::string& name) {
        // Named by process: CTest runs several test processes at once.
        static int serial = 0;
        m_Dir = std::filesystem::temp_directory_path() /
                ("nvk_storage_" + std::to_string(nvk::os::GetCurrentProcessId()) + "_" +
                 std::to_string(serial++));
        std::filesystem::create_directories(m_Dir);
        m_Path = (m_Dir / name).string();
    }
    ~TempPath() {
        std::error_code ignored;
        std::filesystem::remove_all(m_Dir, ignored);
    }
    const char* c_str() const { return m_Path.c_str(); }

private:
    std::filesystem::path m_Dir;
    std::string m_Path;
};

inline std::vector<char> ReadAll(const char* path) {
    EBaseFile file;
    file.Open(path, EBaseFile::kRead, 1);
    std::vector<char> bytes(file.Taille());
    file.Read(bytes.data(), bytes.size());
    return bytes;
}

inline void WriteAll(const char* path, const std::vector<char>& bytes) {
    EBaseFile::Remove(path);
    EBaseFile file;
    file.Open(path, EBaseFile::kRead | EBaseFile::kWrite | EBaseFile::kCreate, 0);
    file.Write(const_cast<char*>(bytes.data()), bytes.size());
}

template <class T>
T At(const std::vector<char>& bytes, std::size_t offset) {
    T value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

template <class T>
void Put(std::vector<char>& bytes, std::size_t offset, T value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

// An index file that can verify itself, also in memory.
class CheckedIndex : public EIndexFile {
public:
    std::string Check() {
        WriteHeader();
        return CheckIndexFile(*m_File);
    }
    std::uint32_t Descriptor32(int index, int offset) const {
        std::uint32_t value;
        std::memcpy(&value,
                    reinterpret_cast<const char*>(m_Header) + 36 + 36 * (index - 1) + offset,
                    sizeof value);
        return value;
    }
    std::uint8_t Height(int index) const {
        return reinterpret_cast<const std::uint8_t*>(m_Header)[36 + 36 * (index - 1) + 8];
    }
    std::uint32_t Header32(int offset) const {
        std::uint32_t value;
        std::memcpy(&value, reinterpret_cast<const char*>(m_Header) + offset, sizeof value);
        return value;
    }
};

}  // namespace nvk::test
