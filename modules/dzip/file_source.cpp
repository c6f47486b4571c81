#include "file_source.h"

#include <cstdio>
#include <ctime>
#include <memory>

#include "os/api/file.h"
#include "os/api/sync.h"

namespace zipengine {

using namespace nvk::os;

namespace {

struct FileState {
    Job& job;
    std::string path;
    std::time_t mtime;
    int number;
    int count;
    HANDLE handle = INVALID_HANDLE_VALUE;
    std::uint64_t size = 0;
    std::uint64_t done = 0;
    zip_error_t error{};
};

bool SizeOf(FileState& state) {
    HANDLE file = CreateFileA(state.path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    DWORD high = 0;
    DWORD low = GetFileSize(file, &high);
    state.size = (std::uint64_t{high} << 32) | low;
    CloseHandle(file);
    return true;
}

zip_int64_t Fail(FileState& state, int code, int zipError) {
    state.job.Fail(code);
    zip_error_set(&state.error, zipError, 0);
    return -1;
}

unsigned long Percent(std::uint64_t part, std::uint64_t whole) {
    return whole == 0 ? 100 : static_cast<unsigned long>(part * 100 / whole);
}

zip_int64_t Callback(void* userData, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    FileState& state = *static_cast<FileState*>(userData);
    switch (command) {
        case ZIP_SOURCE_OPEN: {
            state.handle =
                CreateFileA(state.path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, 0, nullptr);
            if (state.handle == INVALID_HANDLE_VALUE) {
                state.job.Warn(137, "could not open for reading:", state.path);
                return Fail(state, ZE_OPEN, ZIP_ER_OPEN);
            }
            state.done = 0;
            char text[300];
            std::snprintf(text, sizeof(text), state.job.Text(391, "Item %d of %d").c_str(),
                          state.number, state.count);
            state.job.MajorStatus(text, Percent(static_cast<std::uint64_t>(state.number - 1),
                                                static_cast<std::uint64_t>(state.count)));
            state.job.MinorStatus(state.path, 0);
            return state.job.Aborted() ? Fail(state, ZE_ABORTED, ZIP_ER_CANCELLED) : 0;
        }
        case ZIP_SOURCE_READ: {
            DWORD chunk = length > 0x100000 ? 0x100000 : static_cast<DWORD>(length);
            DWORD read = 0;
            if (!ReadFile(state.handle, data, chunk, &read, nullptr)) {
                return Fail(state, ZE_READ, ZIP_ER_READ);
            }
            state.done += read;
            state.job.MinorStatus(state.path, Percent(state.done, state.size));
            return state.job.Aborted() ? Fail(state, ZE_ABORTED, ZIP_ER_CANCELLED) : read;
        }
        case ZIP_SOURCE_CLOSE:
            CloseHandle(state.handle);
            state.handle = INVALID_HANDLE_VALUE;
            return 0;
        case ZIP_SOURCE_STAT: {
            zip_stat_t* stat = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &state.error);
            if (stat == nullptr) {
                return -1;
            }
            zip_stat_init(stat);
            if (!SizeOf(state)) {
                state.job.Warn(137, "could not open for reading:", state.path);
                return Fail(state, ZE_OPEN, ZIP_ER_OPEN);
            }
            stat->size = state.size;
            stat->mtime = state.mtime;
            stat->valid |= ZIP_STAT_SIZE | ZIP_STAT_MTIME;
            return sizeof(zip_stat_t);
        }
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&state.error, data, length);
        case ZIP_SOURCE_FREE:
            if (state.handle != INVALID_HANDLE_VALUE) {
                CloseHandle(state.handle);
            }
            delete &state;
            return 0;
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_READABLE;
        default:
            zip_error_set(&state.error, ZIP_ER_OPNOTSUPP, 0);
            return -1;
    }
}

}  // namespace

std::time_t TimeOfDos(std::uint32_t dosDate, std::uint32_t dosTime) {
    std::tm local{};
    local.tm_year = static_cast<int>(((dosDate >> 9) & 0x7F) + 80);
    local.tm_mon = static_cast<int>(((dosDate >> 5) & 0x0F)) - 1;
    local.tm_mday = static_cast<int>(dosDate & 0x1F);
    local.tm_hour = static_cast<int>((dosTime >> 11) & 0x1F);
    local.tm_min = static_cast<int>((dosTime >> 5) & 0x3F);
    local.tm_sec = static_cast<int>((dosTime & 0x1F) * 2);
    local.tm_isdst = -1;
    return std::mktime(&local);
}

zip_source_t* FileSource(zip_t* archive, Job& job, std::string const& path, std::uint32_t dosDate,
                         std::uint32_t dosTime, int number, int count) {
    auto state = std::make_unique<FileState>(FileState{
        job, path, TimeOfDos(dosDate, dosTime), number, count, INVALID_HANDLE_VALUE, 0, 0, {}});
    zip_error_init(&state->error);
    zip_source_t* source = zip_source_function(archive, Callback, state.get());
    if (source != nullptr) {
        state.release();
    }
    return source;
}

}  // namespace zipengine
