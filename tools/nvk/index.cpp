// nvk index: B+-tree index files: create, add an index, run operations read
// from standard input, verify and dump.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "cli.h"
#include "hex_bytes.h"
#include "nvk/storage/data_file.h"
#include "nvk/storage/index_file.h"
#include "os/api/error.h"
#include "os/api/file_attributes.h"
#include "storage/index_check.h"
#include "storage/index_format.h"
#include "storage/index_keys.h"

namespace fmt = nvk::index_format;

namespace {

using nvk::tool::Args;
using nvk::tool::Command;

// Zero bytes past a key, as past a page, so that string keys end.
constexpr std::size_t kKeyPadding = 16;

// The index file's header, read on the side: the tool needs the key sizes.
bool ReadHeader(const std::string& name, fmt::Header& header) {
    EBaseFile file;
    return file.Open(name.c_str(), EBaseFile::kRead, 1) && file.Read(&header, sizeof header) &&
           header.Magic == fmt::kMagic;
}

bool ParseNumber(const std::string& text, long long low, long long high, long long& value) {
    return nvk::tool::ParseLong(text, value) && value >= low && value <= high;
}

// The index each page belongs to (0: none), found by walking every level of
// every tree along its chain; a page does not say which index it serves.
std::vector<int> Owners(EBaseFile& file, const fmt::Header& header, int indexes) {
    const std::uint64_t size = file.Taille();
    const std::uint32_t pages =
        size < fmt::kHeaderSize
            ? 0
            : static_cast<std::uint32_t>((size - fmt::kHeaderSize) / header.PageSize);
    std::vector<int> owners(pages + 1, 0);
    std::vector<char> page(header.PageSize);
    auto load = [&](std::uint32_t n) {
        return n >= 1 && n <= pages && owners[n] == 0 &&
               file.Seek(
                   static_cast<long>(fmt::kHeaderSize + std::uint64_t{n - 1} * header.PageSize),
                   0) &&
               file.Read(page.data(), header.PageSize) && !fmt::IsFreePage(page.data());
    };
    for (int i = 0; i < indexes; ++i) {
        const fmt::Descriptor& d = header.Indexes[i];
        for (std::uint32_t leftmost = d.Root; load(leftmost);) {
            const fmt::PageHeader top = fmt::LoadPageHeader(page.data());
            const std::uint32_t child =
                top.Level > 0 && top.Count > 0
                    ? fmt::Load32(page.data() + fmt::kPageHeaderSize + d.KeySize)
                    : 0;
            owners[leftmost] = i + 1;
            for (std::uint32_t n = top.NextPage; load(n); n = fmt::NextOf(page.data())) {
                owners[n] = i + 1;
            }
            leftmost = child;
        }
    }
    return owners;
}

class Session {
public:
    Session(EIndexFile& index, const fmt::Header& header) : m_Index(index), m_Header(header) {}

    // One answer line for one command line; for a line that is no valid
    // command, what is wrong with it.
    std::string Answer(const Args& words, std::ostream& out) {
        const std::string& verb = words[0];
        const std::size_t expected =
            verb == "next" || verb == "prev"                                     ? 1
            : verb == "first" || verb == "last" || verb == "count"               ? 2
            : verb == "equal" || verb == "ge" || verb == "le" || verb == "getat" ? 3
            : verb == "insert" || verb == "delete"                               ? 4
            : verb == "update"                                                   ? 5
                                                                                 : 0;
        if (expected == 0) {
            return "not a command: " + verb;
        }
        if (words.size() != expected) {
            return verb + " takes " + std::to_string(expected - 1) + " argument(s)";
        }
        if (verb == "next" || verb == "prev") {
            Deliver(verb == "next" ? m_Index.Next() : m_Index.Prev(), m_Cursor, out);
            return {};
        }
        long long index = 0;
        if (!nvk::tool::ParseLong(words[1], index) || index < -1000 || index > 1000) {
            return "not an index number: " + words[1];
        }
        const int i = static_cast<int>(index);
        std::vector<char> key;
        std::vector<char> other;
        long long value = 0;
        std::string error;
        if (verb == "insert" || verb == "delete") {
            if (!(error = Key(i, words[2], key)).empty()) {
                return error;
            }
            if (!ParseNumber(words[3], 0, 0xFFFFFFFF, value)) {
                return "not a value from 0 to 4294967295: " + words[3];
            }
            const int result = verb == "insert" ? m_Index.Insere(i, key.data(), value)
                                                : m_Index.Delete(i, key.data(), value);
            out << result << '\n';
            return {};
        }
        if (verb == "update") {
            if (!(error = Key(i, words[2], key)).empty() ||
                !(error = Key(i, words[3], other)).empty()) {
                return error;
            }
            if (!ParseNumber(words[4], 0, 0xFFFFFFFF, value)) {
                return "not a value from 0 to 4294967295: " + words[4];
            }
            const int result = m_Index.Update(i, key.data(), other.data(), value);
            out << result << '\n';
            return {};
        }
        if (verb == "equal" || verb == "ge" || verb == "le") {
            if (!(error = Key(i, words[2], key)).empty()) {
                return error;
            }
            const unsigned long found = verb == "equal" ? m_Index.Equal(i, key.data())
                                        : verb == "ge"  ? m_Index.GreaterEqual(i, key.data())
                                                        : m_Index.LessEqual(i, key.data());
            Search(i, found, out);
            return {};
        }
        if (verb == "getat") {
            long long rank = 0;
            if (!ParseNumber(words[2], 0, 0xFFFFFFFF, rank)) {
                return "not a rank: " + words[2];
            }
            Search(i, m_Index.GetAt(i, static_cast<unsigned long>(rank)), out);
            return {};
        }
        if (verb == "count") {
            out << m_Index.Nombre(i) << '\n';
        } else {
            Search(i, verb == "first" ? m_Index.First(i) : m_Index.Last(i), out);
        }
        return {};
    }

private:
    int KeySize(int index) const {
        return index >= 1 && index <= m_Header.IndexCount ? m_Header.Indexes[index - 1].KeySize
                                                          : -1;
    }

    // KeySize bytes in hexadecimal; for an index that does not exist, any
    // whole bytes, since the engine answers for it alone. A string key
    // (type 0) holds its ending zero byte.
    std::string Key(int index, const std::string& hex, std::vector<char>& key) const {
        const int size = KeySize(index);
        if (!nvk::tool::ParseHex(hex, key)) {
            return "not a key in hexadecimal, two digits a byte: " + hex;
        }
        if (size >= 0 && key.size() != static_cast<std::size_t>(size)) {
            return "index " + std::to_string(index) + " takes keys of " + std::to_string(size) +
                   " bytes (" + std::to_string(size * 2) + " hexadecimal digits): " + hex;
        }
        if (size > 0 && m_Header.Indexes[index - 1].KeyType == 0 &&
            std::find(key.begin(), key.end(), 0) == key.end()) {
            return "a key of index " + std::to_string(index) +
                   " is a string and ends with a zero byte (00): " + hex;
        }
        key.resize(std::max<std::size_t>(key.size(), 8) + kKeyPadding, 0);
        return {};
    }

    // The searching operations move the cursor to their index.
    void Search(int index, unsigned long value, std::ostream& out) {
        if (KeySize(index) >= 0) {
            m_Cursor = index;
        }
        Deliver(value, index, out);
    }

    void Deliver(unsigned long value, int index, std::ostream& out) const {
        if (value == 0) {
            out << "0\n";
            return;
        }
        const int size = std::max(KeySize(index), 0);
        out << value << ' '
            << nvk::tool::FormatHex(static_cast<const char*>(m_Index.AdrCle()),
                                    static_cast<std::size_t>(size))
            << '\n';
    }

    EIndexFile& m_Index;
    const fmt::Header& m_Header;
    int m_Cursor = 0;
};

// Why a file could not be made, in words.
std::string WhyNotMade(const std::string& name) {
    const nvk::os::DWORD error = nvk::os::GetLastError();
    if (error == nvk::os::ERROR_PATH_NOT_FOUND) {
        return "the folder of " + name + " does not exist";
    }
    if (error == nvk::os::ERROR_ACCESS_DENIED) {
        return "no permission to create " + name;
    }
    return "cannot create " + name + " (system error " + std::to_string(error) + ")";
}

bool KnownKeyType(long long type) {
    static const int kTypes[] = {0, 1, 2, 4, 5, 12, 14, 15, 16, 18, 20, 23, 29, 255};
    return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

const Command kCommands[] = {
    {"create", "FILE PAGESIZE",
     "create an empty index file with pages of PAGESIZE bytes (12 to 16777216); fails if FILE "
     "exists and is not empty",
     [](const Args& args) {
         long long pageSize = 0;
         if (args.size() != 2 || !ParseNumber(args[1], 1, 0xFFFFFFFF, pageSize)) {
             return nvk::tool::Fail("usage: nvk index create FILE PAGESIZE");
         }
         const std::string& name = args[0];
         if (name.empty()) {
             return nvk::tool::Fail("index create: the file name is empty");
         }
         const nvk::os::DWORD attributes = nvk::os::GetFileAttributesA(name.c_str());
         if (attributes != nvk::os::INVALID_FILE_ATTRIBUTES &&
             (attributes & nvk::os::FILE_ATTRIBUTE_DIRECTORY) != 0) {
             return nvk::tool::Fail(name + " is a folder");
         }
         EIndexFile index;
         if (!index.Create(name.c_str(), static_cast<unsigned long>(pageSize))) {
             return nvk::tool::Fail(attributes != nvk::os::INVALID_FILE_ATTRIBUTES
                                        ? name + " exists and is not empty"
                                        : "page size " + args[1] +
                                              " out of range (12 to 16777216)");
         }
         // Creation answers as if it had made the file even when it could not:
         // look for it.
         EBaseFile made;
         if (!made.Open(name.c_str(), EBaseFile::kRead, 1)) {
             return nvk::tool::Fail(WhyNotMade(name));
         }
         return nvk::tool::kOk;
     }},
    {"add-index", "FILE KEYSIZE KEYTYPE DUPLICATES",
     "add an index and print its number (from 1); KEYSIZE 1 to 251 bytes, at least what "
     "KEYTYPE compares; DUPLICATES 0 for unique keys, 1 to allow equal keys",
     [](const Args& args) {
         long long keySize = 0;
         long long keyType = 0;
         long long duplicates = 0;
         if (args.size() != 4) {
             return nvk::tool::Fail("usage: nvk index add-index FILE KEYSIZE KEYTYPE DUPLICATES");
         }
         if (!ParseNumber(args[1], 1, 251, keySize)) {
             return nvk::tool::Fail("KEYSIZE is a number of bytes from 1 to 251: " + args[1]);
         }
         if (!ParseNumber(args[2], 0, 255, keyType) || !KnownKeyType(keyType)) {
             return nvk::tool::Fail(
                 "unknown key type " + args[2] +
                 " (0, 1, 2, 4, 5, 12, 14, 15, 16, 18, 20, 23, 29 or 255; see --help)");
         }
         if (!ParseNumber(args[3], 0, 1, duplicates)) {
             return nvk::tool::Fail("DUPLICATES is 0 (unique keys) or 1 (equal keys allowed): " +
                                    args[3]);
         }
         const int needed = nvk::KeyTypeSize(static_cast<int>(keyType), static_cast<int>(keySize));
         if (needed > keySize) {
             return nvk::tool::Fail("key type " + args[2] + " needs keys of " +
                                    std::to_string(needed) + " bytes at least");
         }
         EIndexFile index;
         if (!index.Open(args[0].c_str())) {
             return nvk::tool::Fail("cannot open " + args[0] + " as an index file");
         }
         const int number = index.CreateIndex(static_cast<int>(keySize), static_cast<int>(keyType),
                                              static_cast<int>(duplicates));
         if (number == 0) {
             return nvk::tool::Fail(
                 "cannot add an index: 16 already, or a page holds fewer than two entries");
         }
         std::cout << number << '\n';
         return nvk::tool::kOk;
     },
     "  key types: 0 string ending with a zero byte, at most KEYSIZE bytes; 1 signed integer"
     "\n  of 1, 2 or 4 bytes (a larger key compares its first 4); 2 double (8 bytes); 4, 5, 12"
     "\n  signed 32-bit; 14 unsigned byte; 15 signed 16-bit; 16 unsigned 16-bit; 18 unsigned"
     "\n  32-bit; 20, 29 signed 64-bit; 23 float, equal when less than 1 apart; 255 raw bytes."
     "\n  Numbers are little-endian."},
    {"run", "FILE", "run commands from standard input, one answer line for each command line",
     [](const Args& args) {
         if (args.size() != 1) {
             return nvk::tool::Fail("usage: nvk index run FILE");
         }
         fmt::Header header{};
         EIndexFile index;
         if (!ReadHeader(args[0], header) || !index.Open(args[0].c_str())) {
             return nvk::tool::Fail("cannot open " + args[0] + " as an index file");
         }
         Session session(index, header);
         return nvk::tool::RunSession([&](const Args& words, const std::string&) {
             return session.Answer(words, std::cout);
         });
     },
     "  insert|delete I KEY VALUE, update I OLDKEY NEWKEY VALUE: answer 0 done, 1 the key"
     "\n    is already in a unique index, 79 no index I, 128 damaged tree or no such entry;"
     "\n  equal|ge|le I KEY, first|last I, getat I RANK, next, prev: the VALUE and KEY of"
     "\n    the entry found, or 0 for none; count I: the number of keys;"
     "\n  a line that is no valid command answers error, says why on standard error, and"
     "\n  the exit status is then 2."
     "\n  I is the index number from 1; KEY is the key's KEYSIZE bytes in hexadecimal, two"
     "\n  digits a byte (0A000000 is 10 as a 4-byte number); VALUE is 1 to 4294967295"
     "\n  (a value 0 can't be told from none)."
     "\n  A string key (type 0) holds its ending zero byte (414200 is \"AB\")."
     "\n  Example: printf 'insert 1 0A000000 7\\nequal 1 0A000000\\n' | nvk index run f.idx"},
    {"check", "FILE",
     "verify every tree (order, links, parent keys, counts) and the free list; exit 1 with the "
     "first violation",
     [](const Args& args) {
         if (args.size() != 1) {
             return nvk::tool::Fail("usage: nvk index check FILE");
         }
         EBaseFile file;
         if (!file.Open(args[0].c_str(), EBaseFile::kRead, 1)) {
             return nvk::tool::Fail("cannot open " + args[0]);
         }
         const std::string violation = nvk::CheckIndexFile(file);
         if (!violation.empty()) {
             std::cout << violation << '\n';
             return nvk::tool::kNegative;
         }
         std::cout << "ok\n";
         return nvk::tool::kOk;
     }},
    {"dump", "FILE", "show the header, the index descriptors and every page",
     [](const Args& args) {
         if (args.size() != 1) {
             return nvk::tool::Fail("usage: nvk index dump FILE");
         }
         EBaseFile file;
         fmt::Header header{};
         if (!file.Open(args[0].c_str(), EBaseFile::kRead, 1) ||
             !file.Read(&header, sizeof header)) {
             return nvk::tool::Fail("cannot read the header of " + args[0]);
         }
         std::cout << "magic 0x" << std::hex << header.Magic << std::dec << ", page size "
                   << header.PageSize << ", pages in use " << header.PageCount << ", free list "
                   << header.FreePage << ", indexes " << header.IndexCount << '\n';
         const int indexes = std::min<int>(header.IndexCount, fmt::kMaxIndexes);
         for (int i = 0; i < indexes; ++i) {
             const fmt::Descriptor& d = header.Indexes[i];
             std::cout << "index " << i + 1 << ": key size " << int{d.KeySize} << ", type "
                       << int{d.KeyType} << (d.Duplicates ? ", duplicates" : ", unique")
                       << ", keys " << d.KeyCount << ", root " << d.Root << ", height "
                       << int{d.Height} << ", leaves " << d.FirstLeaf << ".." << d.LastLeaf << ", "
                       << d.MaxEntries << " entries a page\n";
         }
         if (header.PageSize < fmt::kPageHeaderSize || header.PageSize > fmt::kMaxPageSize) {
             return nvk::tool::Fail("page size out of range");
         }
         const std::vector<int> owners = Owners(file, header, indexes);
         std::vector<char> page(header.PageSize);
         file.Seek(fmt::kHeaderSize, 0);
         for (std::uint32_t n = 1; file.Read(page.data(), header.PageSize); ++n) {
             if (fmt::IsFreePage(page.data())) {
                 std::cout << "page " << n << ": free, next " << fmt::Load32(page.data() + 4)
                           << '\n';
                 continue;
             }
             const fmt::PageHeader h = fmt::LoadPageHeader(page.data());
             std::cout << "page " << n << ": level " << h.Level << ", " << h.Count
                       << " entries, prev " << h.PrevPage << ", next " << h.NextPage << '\n';
             const int owner = n < owners.size() ? owners[n] : 0;
             const int keySize = owner != 0 ? header.Indexes[owner - 1].KeySize : 0;
             const int entrySize = owner != 0 ? keySize + 4 : 0;
             if (owner == 0 || h.Count > header.Indexes[owner - 1].MaxEntries) {
                 std::cout << "  (not reached from any index)\n";
                 continue;
             }
             for (int slot = 0; entrySize != 0 && slot < h.Count; ++slot) {
                 const char* entry = page.data() + fmt::kPageHeaderSize + slot * entrySize;
                 std::cout << "  " << nvk::tool::FormatHex(entry, keySize) << ' '
                           << fmt::Load32(entry + keySize) << '\n';
             }
         }
         return nvk::tool::kOk;
     }},
};

// A customer file in memory: the records in a record file, and two indexes
// over them, by code (unique) and by city (duplicates), holding record numbers.
void Demo(std::ostream& out) {
    struct Customer {
        char code[8];
        char name[24];
        char city[12];
    };
    const Customer customers[] = {{"C0042", "Boulangerie Favre", "Lausanne"},
                                  {"C0007", "Garage du Lac", "Geneve"},
                                  {"C0019", "Fiduciaire Roux", "Lausanne"},
                                  {"C0031", "Imprimerie Morel", "Lyon"}};
    EDataFile records;
    EIndexFile indexes;
    records.Create(nullptr, sizeof(Customer));
    auto* buffer = static_cast<Customer*>(records.Open(nullptr));
    indexes.Create(nullptr, 512);
    indexes.Open(nullptr);
    const int byCode = indexes.CreateIndex(sizeof buffer->code, 0, 0);
    const int byCity = indexes.CreateIndex(sizeof buffer->city, 0, 1);
    for (const Customer& customer : customers) {
        *buffer = customer;
        records.Insere(nullptr, 0);
        indexes.Insere(byCode, buffer->code, records.Courant());
        indexes.Insere(byCity, buffer->city, records.Courant());
    }
    out << records.Nombre() << " customers of " << sizeof(Customer) << " bytes, listed by code:\n";
    for (unsigned long n = indexes.First(byCode); n != 0; n = indexes.Next()) {
        records.Read(n, nullptr);
        out << "  #" << n << ' ' << buffer->code << "  " << buffer->name << '\n';
    }
    char city[12] = "Lausanne";
    out << indexes.Nombre(byCity, city, std::strlen(city) + 1) << " in " << city << ":";
    for (unsigned long n = indexes.Equal(byCity, city); n != 0; n = indexes.Next()) {
        records.Read(n, nullptr);
        if (std::strcmp(buffer->city, city) != 0) {
            break;
        }
        out << ' ' << buffer->name << ';';
    }
    out << '\n';
}

const nvk::tool::RegisterArea kArea({"index", "B+-tree index files", kCommands, Demo, 30});

}  // namespace
