// The archive's file on POSIX, read through a descriptor.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "archive_input.h"

namespace nvk::unzip {

namespace {

class File : public ArchiveInput {
public:
    File(std::string path, int fd, std::uint64_t size)
        : m_Path(std::move(path)), m_Fd(fd), m_Size(size) {}
    ~File() override { close(m_Fd); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    zip_source_t* Source(std::uint64_t start, zip_error_t* error) override {
        if (start >= m_Size) {
            zip_error_set(error, ZIP_ER_NOZIP, 0);
            return nullptr;
        }
        return zip_source_file_create(m_Path.c_str(), start,
                                      static_cast<zip_int64_t>(m_Size - start), error);
    }
    std::uint64_t Size() const override { return m_Size; }
    bool ReadAt(std::uint64_t position, void* data, std::size_t size) const override {
        auto* bytes = static_cast<char*>(data);
        while (size > 0) {
            ssize_t got = pread(m_Fd, bytes, size, static_cast<off_t>(position));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got <= 0) {
                return false;
            }
            bytes += got;
            size -= static_cast<std::size_t>(got);
            position += static_cast<std::uint64_t>(got);
        }
        return true;
    }

private:
    std::string m_Path;
    int m_Fd;
    std::uint64_t m_Size;
};

}  // namespace

std::unique_ptr<ArchiveInput> FileInput(const std::string& nativePath, int* errorNumber) {
    int fd = open(nativePath.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat info {};
    if (fd < 0 || fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        *errorNumber = fd < 0 ? errno : EISDIR;
        if (fd >= 0) {
            close(fd);
        }
        return nullptr;
    }
    return std::make_unique<File>(nativePath, fd, static_cast<std::uint64_t>(info.st_size));
}

}  // namespace nvk::unzip
