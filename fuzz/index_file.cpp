// Opens an index file image and runs a sequence of operations on it. Input:
// one byte n, n bytes of operations (three bytes each), then the file image.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "nvk/storage/index_file.h"
#include "os/api/sync.h"
#include "storage/index_check.h"
#include "storage/index_format.h"

namespace {

std::string ScratchPath() {
    return (std::filesystem::temp_directory_path() /
            ("nvk_fuzz_index_" + std::to_string(nvk::os::GetCurrentProcessId()) + ".idx"))
        .string();
}

void WriteImage(const std::string& path, const std::uint8_t* data, std::size_t size) {
    EBaseFile::Remove(path.c_str());
    EBaseFile file;
    file.Open(path.c_str(), EBaseFile::kRead | EBaseFile::kWrite | EBaseFile::kCreate, 0);
    file.Write(const_cast<std::uint8_t*>(data), static_cast<unsigned long>(size));
}

void Run(EIndexFile& index, const std::uint8_t* ops, std::size_t count) {
    // Keys as long as the longest key type, padded as a careful caller does.
    std::vector<std::uint8_t> key(256 + 16);
    std::vector<std::uint8_t> other(256 + 16);
    for (std::size_t i = 0; i + 3 <= count; i += 3) {
        const int op = ops[i] % 18;
        const int number = ops[i + 1] % 19;  // also 0, one past the last, and beyond
        std::memset(key.data(), ops[i + 2], 255);
        key[0] = static_cast<std::uint8_t>(ops[i + 2] * 37);
        std::memset(other.data(), ops[i + 2] ^ 0x5A, 255);
        const unsigned long value = ops[i + 2] + 1u;
        switch (op) {
            case 0:
            case 1:
                index.Insere(number, key.data(), value);
                break;
            case 2:
                index.Delete(number, key.data(), value);
                break;
            case 3:
                index.Update(number, key.data(), other.data(), value);
                break;
            case 4:
                index.Equal(number, key.data());
                break;
            case 5:
                index.GreaterEqual(number, key.data());
                break;
            case 6:
                index.LessEqual(number, key.data());
                break;
            case 7:
                index.First(number);
                break;
            case 8:
                index.Last(number);
                break;
            case 9:
            case 10:
                index.Next();
                break;
            case 11:
                index.Prev();
                break;
            case 12:
                index.GetAt(number, ops[i + 2]);
                break;
            case 13:
                index.GetAt(number, ops[i + 2] % 4, key.data(), ops[i + 2] % 6);
                break;
            case 14:
                index.Nombre(number, key.data(), ops[i + 2] % 6);
                break;
            case 15:
                index.GetFocus(number, key.data(), 1 + ops[i + 2] % 5);
                break;
            case 16:
                index.CreateIndex(ops[i + 2] % 12, ops[i + 1], ops[i + 2] & 1);
                break;
            default:
                for (int n = 0; n < 300 && index.Next() != 0; ++n) {
                }
                break;
        }
    }
}

bool Sound(const std::string& path) {
    EBaseFile file;
    return file.Open(path.c_str(), EBaseFile::kRead, 1) && nvk::CheckIndexFile(file).empty();
}

// Whether every index of the file orders its keys: doubles (type 2) put
// unordered values below all others, and floats (type 23) are equal within a
// unit, which no tree can keep in order.
bool Ordered(const std::string& path) {
    nvk::index_format::Header header{};
    EBaseFile file;
    if (!file.Open(path.c_str(), EBaseFile::kRead, 1) || !file.Read(&header, sizeof header)) {
        return false;
    }
    for (int i = 0; i < header.IndexCount && i < nvk::index_format::kMaxIndexes; ++i) {
        if (header.Indexes[i].KeyType == 2 || header.Indexes[i].KeyType == 23) {
            return false;
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    const std::size_t opsSize = std::min<std::size_t>(data[0], size - 1);
    const std::string path = ScratchPath();
    WriteImage(path, data + 1 + opsSize, size - 1 - opsSize);
    const bool sound = Sound(path);
    EIndexFile index;
    if (index.Open(path.c_str())) {
        Run(index, data + 1, opsSize);
        index.Close();
        // Changes keep a sound file sound, refused ones included.
        if (sound && Ordered(path) && !Sound(path)) {
            std::abort();
        }
    }
    EBaseFile::Remove(path.c_str());
    return 0;
}
