// The archive's file on Windows, read through a handle; libzip opens it again
// by its ANSI name.
#include <windows.h>

#include <cerrno>

#include "archive_input.h"

namespace nvk::unzip {

namespace {

class File : public ArchiveInput {
public:
    File(std::string path, HANDLE handle, std::uint64_t size)
        : m_Path(std::move(path)), m_Handle(handle), m_Size(size) {}
    ~File() override { CloseHandle(m_Handle); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    zip_source_t* Source(std::uint64_t start, zip_error_t* error) override {
        if (start >= m_Size) {
            zip_error_set(error, ZIP_ER_NOZIP, 0);
            return nullptr;
        }
        return zip_source_win32a_create(m_Path.c_str(), start,
                                        static_cast<zip_int64_t>(m_Size - start), error);
    }
    std::uint64_t Size() const override { return m_Size; }
    bool ReadAt(std::uint64_t position, void* data, std::size_t size) const override {
        auto* bytes = static_cast<char*>(data);
        while (size > 0) {
            OVERLAPPED at{};
            at.Offset = static_cast<DWORD>(position);
            at.OffsetHigh = static_cast<DWORD>(position >> 32);
            DWORD chunk = size > (1u << 30) ? (1u << 30) : static_cast<DWORD>(size);
            DWORD got = 0;
            if (!ReadFile(m_Handle, bytes, chunk, &got, &at) || got == 0) {
                return false;
            }
            bytes += got;
            size -= got;
            position += got;
        }
        return true;
    }

private:
    std::string m_Path;
    HANDLE m_Handle;
    std::uint64_t m_Size;
};

}  // namespace

std::unique_ptr<ArchiveInput> FileInput(const std::string& nativePath, int* errorNumber) {
    // A folder does not open without FILE_FLAG_BACKUP_SEMANTICS.
    HANDLE handle = CreateFileA(nativePath.c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    LARGE_INTEGER size{};
    if (handle == INVALID_HANDLE_VALUE || !GetFileSizeEx(handle, &size)) {
        DWORD error = GetLastError();
        *errorNumber =
            error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? ENOENT : EACCES;
        if (handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
        return nullptr;
    }
    return std::make_unique<File>(nativePath, handle, static_cast<std::uint64_t>(size.QuadPart));
}

}  // namespace nvk::unzip
