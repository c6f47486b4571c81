#include "archive_input.h"

#include <cstring>

namespace nvk::unzip {

namespace {

class Memory : public ArchiveInput {
public:
    Memory(const void* data, std::size_t size)
        : m_Data(static_cast<const unsigned char*>(data)), m_Size(size) {}

    zip_source_t* Source(std::uint64_t start, zip_error_t* error) override {
        if (start > m_Size) {
            zip_error_set(error, ZIP_ER_NOZIP, 0);
            return nullptr;
        }
        return zip_source_buffer_create(m_Data + start, m_Size - start, 0, error);
    }
    std::uint64_t Size() const override { return m_Size; }
    bool ReadAt(std::uint64_t position, void* data, std::size_t size) const override {
        if (position > m_Size || size > m_Size - position) {
            return false;
        }
        std::memcpy(data, m_Data + position, size);
        return true;
    }

private:
    const unsigned char* m_Data;
    std::size_t m_Size;
};

std::uint64_t Little(const unsigned char* bytes, int count) {
    std::uint64_t value = 0;
    for (int i = count - 1; i >= 0; --i) {
        value = (value << 8) | bytes[i];
    }
    return value;
}

constexpr std::size_t kEndRecord = 22;
constexpr std::size_t kZip64Locator = 20;
constexpr std::size_t kZip64EndRecord = 56;
constexpr std::size_t kMaxComment = 65535;

}  // namespace

std::unique_ptr<ArchiveInput> MemoryInput(const void* data, std::size_t size) {
    return std::make_unique<Memory>(data, size);
}

std::uint64_t FindPreamble(const ArchiveInput& input) {
    const std::uint64_t size = input.Size();
    if (size < kEndRecord) {
        return 0;
    }
    const std::uint64_t tail = std::min<std::uint64_t>(size, kEndRecord + kMaxComment);
    std::vector<unsigned char> bytes(tail);
    if (!input.ReadAt(size - tail, bytes.data(), bytes.size())) {
        return 0;
    }
    for (std::size_t at = bytes.size() - kEndRecord + 1; at-- > 0;) {
        const unsigned char* end = bytes.data() + at;
        if (std::memcmp(end, "PK\5\6", 4) != 0) {
            continue;
        }
        const std::uint64_t endPosition = size - tail + at;
        std::uint64_t directorySize = Little(end + 12, 4);
        std::uint64_t directoryOffset = Little(end + 16, 4);
        std::uint64_t recordPosition = endPosition;
        unsigned char locator[kZip64Locator];
        unsigned char record[kZip64EndRecord];
        if (endPosition >= kZip64Locator &&
            input.ReadAt(endPosition - kZip64Locator, locator, sizeof locator) &&
            std::memcmp(locator, "PK\6\7", 4) == 0) {
            // The ZIP64 end record lies just before its locator.
            if (endPosition < kZip64Locator + kZip64EndRecord) {
                return 0;
            }
            recordPosition = endPosition - kZip64Locator - kZip64EndRecord;
            if (!input.ReadAt(recordPosition, record, sizeof record) ||
                std::memcmp(record, "PK\6\6", 4) != 0) {
                return 0;
            }
            directorySize = Little(record + 40, 8);
            directoryOffset = Little(record + 48, 8);
        }
        if (directorySize > recordPosition || directoryOffset > recordPosition - directorySize) {
            return 0;
        }
        return recordPosition - directorySize - directoryOffset;
    }
    return 0;
}

}  // namespace nvk::unzip
