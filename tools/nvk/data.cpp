// nvk data: record files: create, run operations read from standard input,
// dump.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "cli.h"
#include "hex_bytes.h"
#include "nvk/core/chaine.h"
#include "nvk/storage/data_file.h"
#include "storage/data_format.h"

namespace dfmt = nvk::data_format;

namespace {

using nvk::tool::Args;
using nvk::tool::Command;
using nvk::tool::FormatHex;

class Session {
public:
    explicit Session(EDataFile& records)
        : m_Records(records), m_Fixed(records.Adresse() != nullptr) {}

    bool Answer(const Args& words, std::ostream& out) {
        const std::string& verb = words[0];
        std::vector<char> bytes;
        if ((verb == "insert" || verb == "update") &&
            (words.size() != 2 || !nvk::tool::ParseHex(words[1], bytes))) {
            return false;
        }
        if (verb == "insert") {
            if (m_Fixed && !Fill(bytes)) {
                return false;
            }
            m_Records.Insere(bytes.data(), bytes.size());
            out << m_Records.Courant() << '\n';
        } else if (verb == "update") {
            if (m_Fixed ? !Fill(bytes) : !Pad(bytes)) {
                return false;
            }
            m_Records.Update(bytes.data(), bytes.size());
            out << m_Records.Courant() << '\n';
        } else if (verb == "read") {
            long long position = 0;
            if (words.size() != 2 || !nvk::tool::ParseLong(words[1], position) || position < 0 ||
                position > 0xFFFFFFFF) {
                return false;
            }
            Show(static_cast<unsigned long>(position), out);
        } else if (words.size() != 1) {
            return false;
        } else if (verb == "delete") {
            m_Records.Delete();
            out << m_Records.Courant() << '\n';
        } else if (verb == "count") {
            out << m_Records.Nombre() << '\n';
        } else if (verb == "first" || verb == "next" || verb == "last" || verb == "prev") {
            const int found = verb == "first"  ? m_Records.First()
                              : verb == "next" ? m_Records.Next()
                              : verb == "last" ? m_Records.Last()
                                               : m_Records.Prev();
            if (found == 0) {
                out << "0\n";
            } else {
                Show(m_Records.Courant(), out);
            }
        } else {
            return false;
        }
        return true;
    }

private:
    // A fixed-length record takes the bytes given, then zeros.
    bool Fill(const std::vector<char>& bytes) {
        const unsigned long size = m_Records.GetTaille(0);
        if (bytes.size() > size) {
            return false;
        }
        std::memset(m_Records.Adresse(), 0, size);
        std::memcpy(m_Records.Adresse(), bytes.data(), bytes.size());
        return true;
    }

    // A variable-length record keeps its length: shorter bytes are padded.
    bool Pad(std::vector<char>& bytes) {
        const unsigned long size = m_Records.GetTaille(m_Records.Courant());
        if (bytes.size() > size || size > m_Records.getFile()->Taille()) {
            return false;
        }
        bytes.resize(size, 0);
        return true;
    }

    // "POSITION HEX", "POSITION deleted", or 0 for a position with no record.
    void Show(unsigned long position, std::ostream& out) {
        const std::uint64_t fileSize = m_Records.getFile()->Taille();
        if (m_Fixed) {
            const unsigned long size = m_Records.GetTaille(0);
            if (position == 0 || dfmt::kHeaderSize + std::uint64_t{position} * size > fileSize) {
                out << "0\n";
                return;
            }
            m_Records.Read(position, nullptr);
            std::uint32_t first = 0;
            std::memcpy(&first, m_Records.Adresse(), std::min<unsigned long>(size, 4));
            out << position << ' '
                << (first == dfmt::kDeleted && size >= 4 ? "deleted"
                                                         : FormatHex(m_Records.Adresse(), size))
                << '\n';
            return;
        }
        if (position < dfmt::kHeaderSize || position + 4ULL > fileSize) {
            out << "0\n";
            return;
        }
        const unsigned long size = m_Records.GetTaille(position);
        if (size == ~0UL) {
            out << position << " deleted\n";
            return;
        }
        if (size > fileSize - position) {
            out << "0\n";
            return;
        }
        std::vector<char> payload(size + 1);
        m_Records.Read(position, payload.data());
        out << position << ' ' << FormatHex(payload.data(), size) << '\n';
    }

    EDataFile& m_Records;
    bool m_Fixed;
};

const Command kCommands[] = {
    {"create", "FILE RECORDSIZE", "create an empty record file (RECORDSIZE 0: variable records)",
     [](const Args& args) {
         long long size = 0;
         if (args.size() != 2 || !nvk::tool::ParseLong(args[1], size) || size < 0 ||
             size > 0xFFFFFFFF) {
             return nvk::tool::Fail("usage: nvk data create FILE RECORDSIZE");
         }
         const std::string sizeText = std::to_string(size);
         if (size > static_cast<long long>(EDataFile::kMaxRecordSize)) {
             return nvk::tool::Fail("record size " + sizeText + " refused: the largest is " +
                                    std::to_string(EDataFile::kMaxRecordSize));
         }
         if (size != 0 && size < static_cast<long long>(EDataFile::kMinRecordSize)) {
             return nvk::tool::Fail(
                 "record size " + sizeText + " refused: a fixed record must hold the " +
                 std::to_string(EDataFile::kMinRecordSize) + "-byte mark of a deleted record");
         }
         const Chaine folder = Chaine(args[0].c_str()).GetFolder();
         if (!folder.IsEmpty() && !folder.IsFolder()) {
             return nvk::tool::Fail("cannot create " + args[0] + ": the folder " + folder.c_str() +
                                    " does not exist");
         }
         EDataFile records;
         // Create does not tell a file it could not make; the header tells.
         EBaseFile made;
         if (!records.Create(args[0].c_str(), static_cast<unsigned long>(size)) ||
             !made.Open(args[0].c_str(), EBaseFile::kRead, 1) ||
             made.Taille() != dfmt::kHeaderSize) {
             return nvk::tool::Fail("cannot create " + args[0] + " (it exists and is not empty?)");
         }
         return nvk::tool::kOk;
     }},
    {"run", "FILE",
     "run commands from standard input, one answer a line: insert HEX, read POSITION, "
     "update HEX, delete, first, next, last, prev, count",
     [](const Args& args) {
         if (args.size() != 1) {
             return nvk::tool::Fail("usage: nvk data run FILE");
         }
         EDataFile records;
         if (records.Open(args[0].c_str()) == nullptr) {
             return nvk::tool::Fail("cannot open " + args[0] + " as a record file");
         }
         Session session(records);
         return nvk::tool::RunSession([&](const Args& words, const std::string& line) {
             return session.Answer(words, std::cout) ? std::string() : "not a command: " + line;
         });
     }},
    {"dump", "FILE", "show the header and every record",
     [](const Args& args) {
         if (args.size() != 1) {
             return nvk::tool::Fail("usage: nvk data dump FILE");
         }
         EBaseFile file;
         dfmt::Header header{};
         if (!file.Open(args[0].c_str(), EBaseFile::kRead, 1) ||
             !file.Read(&header, sizeof header)) {
             return nvk::tool::Fail("cannot read the header of " + args[0]);
         }
         if (header.Magic != dfmt::kMagic) {
             return nvk::tool::Fail(args[0] + " is not a record file");
         }
         const std::uint64_t size = file.Taille();
         std::cout << "magic 0x" << std::hex << header.Magic << std::dec << ", record size "
                   << header.RecordSize << (header.RecordSize == 0 ? " (variable)" : "")
                   << ", records " << header.RecordCount << ", free list " << header.FreeHead
                   << '\n';
         const bool fixed = header.RecordSize != 0;
         std::vector<char> record;
         std::uint64_t offset = dfmt::kHeaderSize;
         // A fixed record is whole when its own bytes are there, however
         // short; a variable one needs its length word.
         for (std::uint32_t n = 1; offset + (fixed ? header.RecordSize : 4) <= size; ++n) {
             std::uint32_t length = header.RecordSize;
             if (!fixed) {
                 file.Seek(static_cast<long>(offset), 0);
                 file.Read(&length, 4);
             }
             // The mark is read from the record's own bytes only: a short fixed
             // record holds part of it, or none, and a variable record's mark
             // holds its length.
             dfmt::DeletedMark mark{};
             const std::uint64_t markBytes =
                 std::min<std::uint64_t>(sizeof mark, fixed ? header.RecordSize : size - offset);
             file.Seek(static_cast<long>(offset), 0);
             file.Read(&mark, static_cast<unsigned long>(markBytes));
             const bool deleted = markBytes >= 4 && mark.Mark == dfmt::kDeleted;
             if (!fixed && deleted) {
                 length = markBytes == sizeof mark ? mark.Length : 0;
             }
             std::cout << (fixed ? "#" + std::to_string(n) : "@" + std::to_string(offset)) << ": ";
             if (length < (fixed ? 1u : 4u) || offset + length > size) {
                 std::cout << "damaged length " << length << '\n';
                 break;
             }
             if (deleted) {
                 // A record too short for the link shows none.
                 std::cout << "deleted";
                 if (markBytes >= 8) {
                     std::cout << ", next " << mark.Next;
                 }
                 std::cout << '\n';
             } else {
                 const std::uint32_t skip = fixed ? 0 : 4;
                 record.resize(length - skip);
                 file.Seek(static_cast<long>(offset + skip), 0);
                 file.Read(record.data(), length - skip);
                 std::cout << FormatHex(record.data(), record.size()) << '\n';
             }
             offset += length;
         }
         return nvk::tool::kOk;
     }},
};

const nvk::tool::RegisterArea kArea({"data", "record files", kCommands, nullptr, 31});

}  // namespace
