// Where an archive's bytes come from: a file or a block of memory, from a
// starting offset on. libzip refuses an archive with bytes before it ("Not a
// zip archive"), so the archive is opened from the offset where it begins,
// the caller's or the one that its end records give away.
#pragma once

#include <zip.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nvk::unzip {

class ArchiveInput {
public:
    virtual ~ArchiveInput() = default;
    // A new source of the bytes from `start` to the end; null on failure.
    virtual zip_source_t* Source(std::uint64_t start, zip_error_t* error) = 0;
    virtual std::uint64_t Size() const = 0;
    // Reads `size` bytes at `position`; false when they are not all there.
    virtual bool ReadAt(std::uint64_t position, void* data, std::size_t size) const = 0;
};

// The platform's (archive_file_posix.cpp, archive_file_win32.cpp); on failure
// *errorNumber is an errno value, ENOENT when there is no such file.
std::unique_ptr<ArchiveInput> FileInput(const std::string& nativePath, int* errorNumber);
std::unique_ptr<ArchiveInput> MemoryInput(const void* data, std::size_t size);

// The number of bytes before the archive, from its end-of-central-directory
// record (and the ZIP64 one): where the central directory really is, less
// where the archive says it is. 0 when nothing fits.
std::uint64_t FindPreamble(const ArchiveInput& input);

}  // namespace nvk::unzip
