#include "archive_target.h"

#include <cerrno>
#include <memory>

#include "ansi_text.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/file_copy.h"
#include "os/api/sync.h"
#include "os/api/temp_file.h"

namespace zipengine {

using namespace nvk::os;

namespace {

struct TargetState {
    Job& job;
    std::string archive;
    std::string tempFolder;
    HANDLE reader = INVALID_HANDLE_VALUE;
    HANDLE writer = INVALID_HANDLE_VALUE;
    std::string tempFile;
    zip_error_t error{};
};

zip_int64_t Fail(TargetState& state, int zipError) {
    zip_error_set(&state.error, zipError, 0);
    return -1;
}

std::uint64_t Position(HANDLE file) {
    LONG high = 0;
    DWORD low = SetFilePointer(file, 0, &high, FILE_CURRENT);
    return (std::uint64_t{static_cast<DWORD>(high)} << 32) | low;
}

std::uint64_t SizeOf(HANDLE file) {
    DWORD high = 0;
    DWORD low = GetFileSize(file, &high);
    return (std::uint64_t{high} << 32) | low;
}

bool MoveTo(HANDLE file, std::uint64_t offset) {
    LONG high = static_cast<LONG>(offset >> 32);
    DWORD low = SetFilePointer(file, static_cast<LONG>(offset & 0xFFFFFFFF), &high, FILE_BEGIN);
    return !(low == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS);
}

// Where a seek request lands, or -1 with the error set.
zip_int64_t Seek(TargetState& state, HANDLE file, void* data, zip_uint64_t length) {
    zip_int64_t offset =
        zip_source_seek_compute_offset(Position(file), SizeOf(file), data, length, &state.error);
    if (offset < 0) {
        return -1;
    }
    return MoveTo(file, static_cast<std::uint64_t>(offset)) ? 0 : Fail(state, ZIP_ER_SEEK);
}

void DropTemp(TargetState& state) {
    if (state.writer != INVALID_HANDLE_VALUE) {
        CloseHandle(state.writer);
        state.writer = INVALID_HANDLE_VALUE;
    }
    if (!state.tempFile.empty()) {
        DeleteFileA(state.tempFile.c_str());
        state.tempFile.clear();
    }
}

zip_int64_t BeginWrite(TargetState& state) {
    char name[MAX_PATH] = {};
    if (GetTempFileNameA(state.tempFolder.c_str(), "DZ", 0, name) == 0) {
        state.job.Fail(ZE_TEMP);
        return Fail(state, ZIP_ER_TMPOPEN);
    }
    state.tempFile = name;
    state.writer = CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (state.writer == INVALID_HANDLE_VALUE) {
        DropTemp(state);
        state.job.Fail(ZE_TEMP);
        return Fail(state, ZIP_ER_TMPOPEN);
    }
    return 0;
}

zip_int64_t CommitWrite(TargetState& state) {
    bool flushed = FlushFileBuffers(state.writer) != FALSE;
    CloseHandle(state.writer);
    state.writer = INVALID_HANDLE_VALUE;
    if (!flushed || !MoveFileExA(state.tempFile.c_str(), state.archive.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED)) {
        DropTemp(state);
        state.job.Fail(ZE_CREAT);
        return Fail(state, ZIP_ER_RENAME);
    }
    state.tempFile.clear();
    return 0;
}

zip_int64_t Stat(TargetState& state, void* data, zip_uint64_t length) {
    zip_stat_t* stat = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &state.error);
    if (stat == nullptr) {
        return -1;
    }
    zip_stat_init(stat);
    HANDLE file =
        CreateFileA(state.archive.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        // A missing archive is one to create: the library knows it by a read
        // error of the system's ENOENT.
        if (GetFileAttributesA(state.archive.c_str()) == INVALID_FILE_ATTRIBUTES) {
            zip_error_set(&state.error, ZIP_ER_READ, ENOENT);
            return -1;
        }
        return Fail(state, ZIP_ER_OPEN);
    }
    stat->size = SizeOf(file);
    stat->valid |= ZIP_STAT_SIZE;
    CloseHandle(file);
    return sizeof(zip_stat_t);
}

zip_int64_t Callback(void* userData, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    TargetState& state = *static_cast<TargetState*>(userData);
    switch (command) {
        case ZIP_SOURCE_OPEN:
            state.reader =
                CreateFileA(state.archive.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, 0, nullptr);
            return state.reader == INVALID_HANDLE_VALUE ? Fail(state, ZIP_ER_OPEN) : 0;
        case ZIP_SOURCE_READ: {
            DWORD chunk = length > 0x100000 ? 0x100000 : static_cast<DWORD>(length);
            DWORD read = 0;
            if (!ReadFile(state.reader, data, chunk, &read, nullptr)) {
                return Fail(state, ZIP_ER_READ);
            }
            return read;
        }
        case ZIP_SOURCE_SEEK:
            return Seek(state, state.reader, data, length);
        case ZIP_SOURCE_TELL:
            return static_cast<zip_int64_t>(Position(state.reader));
        case ZIP_SOURCE_CLOSE:
            CloseHandle(state.reader);
            state.reader = INVALID_HANDLE_VALUE;
            return 0;
        case ZIP_SOURCE_STAT:
            return Stat(state, data, length);
        case ZIP_SOURCE_BEGIN_WRITE:
            return BeginWrite(state);
        case ZIP_SOURCE_WRITE: {
            DWORD chunk = length > 0x100000 ? 0x100000 : static_cast<DWORD>(length);
            DWORD written = 0;
            if (!WriteFile(state.writer, data, chunk, &written, nullptr) || written != chunk) {
                state.job.Fail(ZE_WRITE);
                return Fail(state, ZIP_ER_WRITE);
            }
            return written;
        }
        case ZIP_SOURCE_SEEK_WRITE:
            return Seek(state, state.writer, data, length);
        case ZIP_SOURCE_TELL_WRITE:
            return static_cast<zip_int64_t>(Position(state.writer));
        case ZIP_SOURCE_COMMIT_WRITE:
            return CommitWrite(state);
        case ZIP_SOURCE_ROLLBACK_WRITE:
            DropTemp(state);
            return 0;
        case ZIP_SOURCE_REMOVE:
            // The last entry went: there is no archive left.
            return DeleteFileA(state.archive.c_str()) ? 0 : Fail(state, ZIP_ER_REMOVE);
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&state.error, data, length);
        case ZIP_SOURCE_FREE:
            if (state.reader != INVALID_HANDLE_VALUE) {
                CloseHandle(state.reader);
            }
            DropTemp(state);
            delete &state;
            return 0;
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_WRITABLE;
        default:
            return Fail(state, ZIP_ER_OPNOTSUPP);
    }
}

std::string FolderOf(std::string const& path) {
    std::size_t slash = path.find_last_of("\\/");
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash + 1);
}

}  // namespace

zip_source_t* ArchiveTarget(Job& job, std::string const& archive, std::string const& tempFolder,
                            zip_error_t* error) {
    auto state = std::make_unique<TargetState>(
        TargetState{job,
                    archive,
                    WindowsForm(tempFolder.empty() ? FolderOf(archive) : tempFolder),
                    INVALID_HANDLE_VALUE,
                    INVALID_HANDLE_VALUE,
                    {},
                    {}});
    zip_error_init(&state->error);
    zip_source_t* source = zip_source_function_create(Callback, state.get(), error);
    if (source != nullptr) {
        state.release();
    }
    return source;
}

}  // namespace zipengine
