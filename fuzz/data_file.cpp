// Opens a record file image and runs a sequence of operations on it. Input:
// one byte n, n bytes of operations (two bytes each), then the file image.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "nvk/storage/data_file.h"
#include "os/api/sync.h"

namespace {

std::string ScratchPath() {
    return (std::filesystem::temp_directory_path() /
            ("nvk_fuzz_data_" + std::to_string(nvk::os::GetCurrentProcessId()) + ".dat"))
        .string();
}

void WriteImage(const std::string& path, const std::uint8_t* data, std::size_t size) {
    EBaseFile::Remove(path.c_str());
    EBaseFile file;
    file.Open(path.c_str(), EBaseFile::kRead | EBaseFile::kWrite | EBaseFile::kCreate, 0);
    file.Write(const_cast<std::uint8_t*>(data), static_cast<unsigned long>(size));
}

// A careful caller: record buffers sized by the file, payloads read only
// when their size fits what the file holds.
void Run(EDataFile& records, bool fixed, const std::uint8_t* ops, std::size_t count) {
    std::vector<char> payload(300);
    for (std::size_t i = 0; i + 2 <= count; i += 2) {
        const std::uint8_t arg = ops[i + 1];
        std::fill(payload.begin(), payload.end(), static_cast<char>(arg));
        switch (ops[i] % 10) {
            case 0:
                if (fixed) {
                    std::memset(records.Adresse(), arg,
                                std::min<unsigned long>(records.GetTaille(0), 64));
                }
                records.Insere(payload.data(), 8 + arg % 60);
                break;
            case 1: {
                const unsigned long position = fixed ? arg % 16 : 36 + arg;
                const unsigned long size = records.GetTaille(position);
                if (fixed) {
                    records.Read(position, nullptr);
                } else if (size <= records.getFile()->Taille()) {
                    std::vector<char> buffer(size + 1);
                    records.Read(position, buffer.data());
                }
                break;
            }
            case 2: {
                // Update writes the record's whole stored size from the buffer.
                const unsigned long size = fixed ? 0 : records.GetTaille(records.Courant());
                if (size <= records.getFile()->Taille()) {
                    std::vector<char> buffer(size + 1, static_cast<char>(arg));
                    records.Update(buffer.data(), arg);
                }
                break;
            }
            case 3:
                records.Delete();
                break;
            case 4:
                records.First();
                break;
            case 5:
                records.Next();
                break;
            case 6:
                records.Last();
                break;
            case 7:
                records.Prev();
                break;
            case 8:
                records.Seek(fixed ? arg % 16 : 36 + arg);
                break;
            default:
                for (int n = 0, more = records.First(); more && n < 400; ++n) {
                    more = records.Next();
                }
                break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    const std::size_t opsSize = std::min<std::size_t>(data[0], size - 1);
    const std::string path = ScratchPath();
    WriteImage(path, data + 1 + opsSize, size - 1 - opsSize);
    EDataFile records;
    void* opened = records.Open(path.c_str());
    if (opened != nullptr) {
        Run(records, records.Adresse() != nullptr, data + 1, opsSize);
        records.Close();
    }
    EBaseFile::Remove(path.c_str());
    return 0;
}
