#include "engine.h"

#include <zip.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "nvk/archive/unzip_engine.h"
#include "operations_log.h"
#include "os/api/path_map.h"
#include "safe_output.h"
#include "texts.h"

namespace nvk::unzip {

namespace {

constexpr std::size_t kChunk = 256 * 1024;
constexpr unsigned kUnixLink = 0120000;
constexpr unsigned kUnixType = 0170000;
constexpr std::uint32_t kAttributeReadOnly = 0x01;
constexpr std::uint32_t kAttributeDirectory = 0x10;
constexpr std::uint32_t kAttributeArchive = 0x20;

struct ZipCloser {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct FileCloser {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using ZipPtr = std::unique_ptr<zip_t, ZipCloser>;
using FilePtr = std::unique_ptr<zip_file_t, FileCloser>;

int CodeOfError(int zipError) {
    switch (zipError) {
        case ZIP_ER_NOZIP:
        case ZIP_ER_INCONS:
        case ZIP_ER_ZLIB:
        case ZIP_ER_COMPRESSED_DATA:
        case ZIP_ER_MULTIDISK:
            return kUnzipBadStructure;
        case ZIP_ER_EOF:
        case ZIP_ER_READ:
        case ZIP_ER_SEEK:
            return kUnzipUnexpectedEnd;
        case ZIP_ER_MEMORY:
            return kUnzipNoMemory;
        case ZIP_ER_NOENT:
            return kUnzipNothingFound;
        case ZIP_ER_CRC:
            return kUnzipBadCrc;
        case ZIP_ER_NOPASSWD:
            return kUnzipEncrypted;
        case ZIP_ER_WRONGPASSWD:
            return kUnzipBadPassword;
        case ZIP_ER_COMPNOTSUPP:
        case ZIP_ER_ENCRNOTSUPP:
            return kUnzipUnknownMethod;
        case ZIP_ER_CANCELLED:
            return kUnzipAbortedByApp;
        default:
            return kUnzipOpenFailed;
    }
}

// Case-blind wildcard match, '\' and '/' alike: * any run, ? one character.
bool Matches(const char* pattern, const char* name) {
    auto same = [](char a, char b) {
        if (a == '\\') {
            a = '/';
        }
        if (b == '\\') {
            b = '/';
        }
        auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
        return lower(a) == lower(b);
    };
    const char* star = nullptr;
    const char* resume = nullptr;
    while (*name != '\0') {
        if (*pattern == '*') {
            star = pattern++;
            resume = name;
        } else if (*pattern != '\0' && (*pattern == '?' || same(*pattern, *name))) {
            ++pattern;
            ++name;
        } else if (star != nullptr) {
            pattern = star + 1;
            name = ++resume;
        } else {
            return false;
        }
    }
    while (*pattern == '*') {
        ++pattern;
    }
    return *pattern == '\0';
}

std::vector<std::string> SplitItems(const char* list) {
    std::vector<std::string> items;
    std::string item;
    bool quoted = false;
    bool any = false;
    for (const char* c = list;; ++c) {
        if (*c == '"') {
            quoted = !quoted;
            any = true;
        } else if (*c == '\0' || (*c == ' ' && !quoted)) {
            if (any || !item.empty()) {
                items.push_back(item);
            }
            item.clear();
            any = false;
            if (*c == '\0') {
                return items;
            }
        } else {
            item += *c;
        }
    }
}

struct Member {
    zip_uint64_t Index;
    std::string Raw;   // the name's bytes as stored
    std::string Disk;  // the name on disk: its bytes, or its text as UTF-8
    std::string Ansi;  // the name in the library's text
    zip_stat_t Stat;
    bool IsFolder;
    bool IsLink;
    unsigned Mode;
    std::uint32_t Attributes;
};

std::uint32_t DosDate(std::time_t time) {
    std::tm parts{};
    localtime_r(&time, &parts);
    if (parts.tm_year < 80) {
        return (1 << 5) | 1;
    }
    return static_cast<std::uint32_t>(((parts.tm_year - 80) << 9) | ((parts.tm_mon + 1) << 5) |
                                      parts.tm_mday);
}

std::uint32_t DosTime(std::time_t time) {
    std::tm parts{};
    localtime_r(&time, &parts);
    return static_cast<std::uint32_t>((parts.tm_hour << 11) | (parts.tm_min << 5) |
                                      (parts.tm_sec / 2));
}

void CopyText(char* field, std::size_t size, const std::string& text) {
    std::size_t n = std::min(size - 1, text.size());
    std::memcpy(field, text.data(), n);
    field[n] = '\0';
}

class Runner {
public:
    Runner(UNZIPCMDSTRUCT& command, ArchiveInput& input) : m_Command(command), m_Input(input) {}

    int Run() {
        int opened = Open();
        if (opened != kUnzipOk) {
            return opened;
        }
        switch (m_Command.function) {
            case kCountAll:
                m_Command.returnCount = static_cast<int>(m_Members.size());
                return kUnzipOk;
            case kCountNamed:
                return CountNamed();
            case kNextInfo:
            case kNextNamedInfo:
            case kIndexedInfo:
                return Info();
            case kCommentSize:
            case kComment:
                return Comment();
            case kExtract:
            case kFileToMemory:
            case kTestNamed:
                return Process();
            default:
                return kUnzipBadCommand;
        }
    }

private:
    enum class Mode { Extract, Test, Memory };

    int Open() {
        zip_error_t error;
        zip_error_init(&error);
        std::uint64_t start = m_Command.lStartingOffset > 0
                                  ? static_cast<std::uint64_t>(m_Command.lStartingOffset)
                                  : 0;
        int code = OpenAt(start, &error);
        if (code == ZIP_ER_NOZIP && start == 0) {
            // Bytes before the archive (a program, a mail header): its end
            // records tell how many.
            if (std::uint64_t preamble = FindPreamble(m_Input); preamble > 0) {
                start = preamble;
                code = OpenAt(start, &error);
            }
        }
        zip_error_fini(&error);
        if (code != ZIP_ER_OK) {
            return CodeOfError(code);
        }
        m_ArchiveSize = m_Input.Size() - start;
        if (m_Command.decryptFlag != 0 && m_Command.lpszDecryptCode != nullptr) {
            zip_set_default_password(m_Zip.get(), m_Command.lpszDecryptCode);
        }
        return ReadMembers();
    }

    int OpenAt(std::uint64_t start, zip_error_t* error) {
        zip_source_t* source = m_Input.Source(start, error);
        if (source == nullptr) {
            return zip_error_code_zip(error) == ZIP_ER_OK ? ZIP_ER_OPEN : zip_error_code_zip(error);
        }
        zip_error_fini(error);
        zip_error_init(error);
        zip_t* archive = zip_open_from_source(source, ZIP_RDONLY, error);
        if (archive == nullptr) {
            zip_source_free(source);
            return zip_error_code_zip(error);
        }
        m_Zip.reset(archive);
        return ZIP_ER_OK;
    }

    int ReadMembers() {
        zip_int64_t count = zip_get_num_entries(m_Zip.get(), 0);
        m_Members.reserve(static_cast<std::size_t>(std::max<zip_int64_t>(count, 0)));
        for (zip_int64_t i = 0; i < count; ++i) {
            Member member{};
            member.Index = static_cast<zip_uint64_t>(i);
            zip_stat_init(&member.Stat);
            const char* raw = zip_get_name(m_Zip.get(), member.Index, ZIP_FL_ENC_RAW);
            const char* utf8 = zip_get_name(m_Zip.get(), member.Index, ZIP_FL_ENC_GUESS);
            if (raw == nullptr || utf8 == nullptr ||
                zip_stat_index(m_Zip.get(), member.Index, 0, &member.Stat) != 0) {
                return kUnzipBadStructure;
            }
            member.Raw = raw;
            member.Disk = kNamesAreText ? utf8 : raw;
            member.Ansi = AnsiFromUtf8(utf8);
            member.IsFolder =
                !member.Raw.empty() && (member.Raw.back() == '/' || member.Raw.back() == '\\');
            zip_uint8_t system = 0;
            zip_uint32_t external = 0;
            zip_file_get_external_attributes(m_Zip.get(), member.Index, 0, &system, &external);
            member.Mode = 0644;
            member.Attributes = member.IsFolder ? kAttributeDirectory : kAttributeArchive;
            if (system == ZIP_OPSYS_UNIX) {
                unsigned mode = external >> 16;
                member.IsLink = (mode & kUnixType) == kUnixLink;
                if ((mode & 0777) != 0) {
                    member.Mode = mode & 0777;
                }
            } else {
                member.Attributes = (external & 0xFF) | member.Attributes;
                if ((external & kAttributeReadOnly) != 0) {
                    member.Mode = 0444;
                }
            }
            if ((member.Mode & 0200) == 0) {
                member.Attributes |= kAttributeReadOnly;
            }
            m_Members.push_back(std::move(member));
        }
        return kUnzipOk;
    }

    bool Named(const Member& member, const std::vector<std::string>& items) const {
        for (const std::string& item : items) {
            if (Matches(item.c_str(), member.Ansi.c_str()) ||
                Matches(item.c_str(), member.Raw.c_str())) {
                return true;
            }
            if (m_Command.recurseFlag != 0 && item.find_first_of("/\\") == std::string::npos) {
                std::size_t slash = member.Ansi.find_last_of("/\\", member.Ansi.size() - 2);
                if (slash != std::string::npos &&
                    Matches(item.c_str(), member.Ansi.c_str() + slash + 1)) {
                    return true;
                }
            }
        }
        return false;
    }

    std::vector<const Member*> NamedMembers() const {
        std::vector<const Member*> named;
        if (m_Command.lpszFilespec == nullptr) {
            return named;
        }
        std::vector<std::string> items = SplitItems(m_Command.lpszFilespec);
        for (const Member& member : m_Members) {
            if (Named(member, items)) {
                named.push_back(&member);
            }
        }
        return named;
    }

    int CountNamed() {
        m_Command.returnCount = static_cast<int>(NamedMembers().size());
        return kUnzipOk;
    }

    int Info() {
        if (m_Command.zInfo == nullptr) {
            return kUnzipBadCommand;
        }
        std::vector<const Member*> members;
        if (m_Command.function == kNextNamedInfo) {
            members = NamedMembers();
        } else {
            for (const Member& member : m_Members) {
                members.push_back(&member);
            }
        }
        if (m_Command.index < 0 || static_cast<std::size_t>(m_Command.index) >= members.size()) {
            return kUnzipBadIndex;
        }
        FillInfo(*members[static_cast<std::size_t>(m_Command.index)],
                 *static_cast<UnzipMemberInfo*>(m_Command.zInfo));
        if (m_Command.function != kIndexedInfo) {
            ++m_Command.index;
        }
        return kUnzipOk;
    }

    void FillInfo(const Member& member, UnzipMemberInfo& info) {
        std::memset(&info, 0, sizeof info);
        CopyText(info.szFileName, sizeof info.szFileName, member.Ansi);
        info.index = static_cast<std::uint32_t>(member.Index);
        info.uncompressedSize = member.Stat.size;
        info.compressedSize = member.Stat.comp_size;
        info.compressionMethod = member.Stat.comp_method;
        info.crc32 = member.Stat.crc;
        info.dosDate = DosDate(member.Stat.mtime);
        info.dosTime = DosTime(member.Stat.mtime);
        info.attributes = member.Attributes;
        switch (member.Stat.encryption_method) {
            case ZIP_EM_NONE:
                info.encryption = 0;
                break;
            case ZIP_EM_TRAD_PKWARE:
                info.encryption = 1;
                break;
            case ZIP_EM_AES_128:
                info.encryption = 2;
                break;
            case ZIP_EM_AES_192:
                info.encryption = 3;
                break;
            case ZIP_EM_AES_256:
                info.encryption = 4;
                break;
            default:
                info.encryption = 0xFFFF;
                break;
        }
        info.isFolder = member.IsFolder ? 1 : 0;
        zip_uint32_t length = 0;
        if (const char* comment =
                zip_file_get_comment(m_Zip.get(), member.Index, &length, ZIP_FL_ENC_GUESS)) {
            CopyText(info.szComment, sizeof info.szComment,
                     AnsiFromUtf8(std::string_view(comment, length)));
        }
    }

    int Comment() {
        int length = 0;
        const char* comment = zip_get_archive_comment(m_Zip.get(), &length, ZIP_FL_ENC_GUESS);
        std::string text = comment != nullptr
                               ? AnsiFromUtf8(std::string_view(
                                     comment, static_cast<std::size_t>(std::max(length, 0))))
                               : std::string();
        m_Command.returnCount = static_cast<int>(text.size());
        if (m_Command.function == kComment) {
            if (m_Command.lpszReturnString == nullptr) {
                return kUnzipBadCommand;
            }
            std::memcpy(m_Command.lpszReturnString, text.c_str(), text.size() + 1);
        }
        return kUnzipOk;
    }

    std::string Status(int id, const char* fallback, const std::string& name) {
        return Substitute(Message(m_Command, id, fallback), {name});
    }

    bool Report(UNZIPSTATUSPROC callback, void* data, const std::string& text, long percent) {
        if (callback == nullptr) {
            return true;
        }
        std::string copy = text;
        return callback(copy.data(), percent, data) == 0;
    }

    int Process() {
        Mode mode = m_Command.function == kFileToMemory                             ? Mode::Memory
                    : (m_Command.function == kTestNamed || m_Command.testFlag != 0) ? Mode::Test
                                                                                    : Mode::Extract;
        std::vector<const Member*> members = NamedMembers();
        if (members.empty()) {
            return kUnzipNothingToDo;
        }
        std::unique_ptr<Destination> destination;
        std::string logFolder;
        if (mode == Mode::Extract) {
            if (m_Command.lpszDestination == nullptr || m_Command.lpszDestination[0] == '\0') {
                return kUnzipBadCommand;
            }
            destination = std::make_unique<Destination>(NativePath(m_Command.lpszDestination));
            if (!destination->Valid()) {
                return kUnzipCreateFailed;
            }
            logFolder = destination->Folder();
        } else {
            logFolder = NativePath(m_Command.lpszZIPFile);
            logFolder.resize(logFolder.find_last_of(kNativeSeparators) + 1);
        }
        OperationsLog log(m_Command, logFolder);
        const std::uint64_t megabytes =
            m_Command.lResv1 > 0 ? static_cast<std::uint64_t>(m_Command.lResv1) : 0;
        m_OutputLimit = megabytes > 0 ? megabytes << 20 : kDefaultOutputLimit;
        const std::uint64_t ratio = m_Command.lResv2 > 0
                                        ? static_cast<std::uint64_t>(m_Command.lResv2)
                                        : kDefaultRatioLimit;
        m_OutputLimit = std::min(m_OutputLimit, ratio * std::max<std::uint64_t>(m_ArchiveSize, 1));

        if (mode == Mode::Memory) {
            int code = ToMemory(*members.front());
            if (code == kUnzipOk) {
                log.Line(147, "%s [Memory]", members.front()->Ansi);
            }
            return code;
        }
        int worst = kUnzipOk;
        const std::string total = std::to_string(members.size());
        for (std::size_t i = 0; i < members.size(); ++i) {
            const Member& member = *members[i];
            const long percent = static_cast<long>(i * 100 / members.size());
            // Asked for each member: a caller that counts items itself
            // answers with its own numbers.
            const std::string item = Message(m_Command, 71, "Item %d of %d");
            if (!Report(m_Command.lpMajorStatus, m_Command.lpMajorUserData,
                        Substitute(item, {std::to_string(i + 1), total}), percent)) {
                return kUnzipAbortedByApp;
            }
            int code = mode == Mode::Test ? Read(member, nullptr, Mode::Test)
                                          : Extract(member, *destination);
            if (code == kUnzipOk) {
                log.Line(mode == Mode::Test ? 146 : 145,
                         mode == Mode::Test ? "%s [Tested]" : "%s [Extracted]", member.Ansi);
            } else if (code == kUnzipSkipped) {
                worst = kUnzipSkipped;
            } else {
                return code;
            }
        }
        return worst;
    }

    int OpenMember(const Member& member, FilePtr& data) {
        // libzip leaks the sources it has stacked when it then finds a method
        // it lacks, so those members are refused before it is asked.
        if (!zip_compression_method_supported(member.Stat.comp_method, 0) ||
            (member.Stat.encryption_method != ZIP_EM_NONE &&
             !zip_encryption_method_supported(member.Stat.encryption_method, 0))) {
            return kUnzipUnknownMethod;
        }
        data.reset(zip_fopen_index(m_Zip.get(), member.Index, 0));
        return data != nullptr ? kUnzipOk
                               : CodeOfError(zip_error_code_zip(zip_get_error(m_Zip.get())));
    }

    // Reads a member through, into `file` when there is one; checks the size
    // it says it has, the run's limits and the checksum (libzip's).
    int Read(const Member& member, Destination::File* file, Mode mode) {
        if (member.IsFolder) {
            return kUnzipOk;
        }
        // A member that owns up to its size is stopped before any byte.
        if (member.Stat.size > m_OutputLimit - std::min(m_Output, m_OutputLimit)) {
            return kUnzipAborted;
        }
        FilePtr data;
        if (int code = OpenMember(member, data); code != kUnzipOk) {
            return code;
        }
        const std::string text = mode == Mode::Test ? Status(73, "Testing: %s", member.Ansi)
                                                    : Status(72, "Extracting: %s", member.Ansi);
        std::vector<char> buffer(kChunk);
        std::uint64_t done = 0;
        for (;;) {
            zip_int64_t got = zip_fread(data.get(), buffer.data(), buffer.size());
            if (got < 0) {
                return CodeOfError(zip_error_code_zip(zip_file_get_error(data.get())));
            }
            if (got == 0) {
                break;
            }
            done += static_cast<std::uint64_t>(got);
            m_Output += static_cast<std::uint64_t>(got);
            if (done > member.Stat.size) {
                return kUnzipBadStructure;
            }
            if (m_Output > m_OutputLimit) {
                return kUnzipAborted;
            }
            if (file != nullptr && !file->Write(buffer.data(), static_cast<std::size_t>(got))) {
                return kUnzipDiskFull;
            }
            long percent =
                member.Stat.size == 0 ? 100 : static_cast<long>(done * 100 / member.Stat.size);
            if (!Report(m_Command.lpMinorStatus, m_Command.lpMinorUserData, text, percent)) {
                return kUnzipAbortedByApp;
            }
        }
        return done == member.Stat.size ? kUnzipOk : kUnzipBadStructure;
    }

    int Extract(const Member& member, Destination& destination) {
        if (member.IsLink) {
            return kUnzipSkipped;
        }
        std::vector<std::string> parts = SafeComponents(member.Disk);
        if (parts.empty()) {
            return member.Disk == "./" ? kUnzipOk : kUnzipSkipped;
        }
        if (m_Command.noDirectoryNamesFlag != 0) {
            if (member.IsFolder) {
                return kUnzipOk;
            }
            parts.erase(parts.begin(), parts.end() - 1);
        }
        if (m_Command.lpRenameProc != nullptr && !Rename(member, parts)) {
            return kUnzipOk;
        }
        if (parts.empty()) {
            return kUnzipSkipped;
        }
        if (member.IsFolder) {
            if (m_Command.noDirectoryItemsFlag != 0) {
                return kUnzipOk;
            }
            auto status = destination.MakeFolders(parts, parts.size());
            return status == Destination::Status::Ok        ? kUnzipOk
                   : status == Destination::Status::Refused ? kUnzipSkipped
                                                            : kUnzipCreateFailed;
        }
        std::time_t modified = 0;
        int existing = destination.Existing(parts, &modified);
        if (existing == 1) {
            return kUnzipSkipped;
        }
        if (m_Command.freshenFlag != 0 || m_Command.updateFlag != 0) {
            if (existing == 0 && modified >= member.Stat.mtime) {
                return kUnzipOk;
            }
            if (existing == -1 && m_Command.updateFlag == 0) {
                return kUnzipOk;
            }
        } else if (existing == 0 && m_Command.overWriteFlag == 0) {
            return kUnzipOk;
        }
        Destination::File file;
        auto status = destination.Create(parts, file);
        if (status != Destination::Status::Ok) {
            return status == Destination::Status::Refused ? kUnzipSkipped : kUnzipCreateFailed;
        }
        int code = Read(member, &file, Mode::Extract);
        if (code != kUnzipOk) {
            return code;
        }
        return file.Commit(member.Stat.mtime, member.Mode) ? kUnzipOk : kUnzipCreateFailed;
    }

    // The caller's name for a member below the destination; false skips it.
    bool Rename(const Member& member, std::vector<std::string>& parts) {
        UnzipRenameRecord record{};
        std::string joined;
        for (const std::string& part : parts) {
            joined += (joined.empty() ? "" : "\\") + part;
        }
        CopyText(record.szNewName, sizeof record.szNewName, AnsiFromUtf8(joined));
        record.dosDate = DosDate(member.Stat.mtime);
        record.dosTime = DosTime(member.Stat.mtime);
        record.attributes = member.Attributes;
        CopyText(record.szSourceName, sizeof record.szSourceName, member.Ansi);
        if (m_Command.lpRenameProc(&record, m_Command.lpRenameUserData) != 0) {
            return false;
        }
        record.szNewName[sizeof record.szNewName - 1] = '\0';
        std::string renamed = record.szNewName;
        if (renamed != AnsiFromUtf8(joined)) {
            parts = SafeComponents(Utf8FromAnsi(renamed));
        }
        return true;
    }

    int ToMemory(const Member& member) {
        if (m_Command.lpMemBlock == nullptr || m_Command.lMemBlockSize < 0) {
            return kUnzipBadCommand;
        }
        if (member.Stat.size > static_cast<std::uint64_t>(m_Command.lMemBlockSize)) {
            return kUnzipNoMemory;
        }
        // The block is the limit: a member that says less than it holds is
        // cut at its word by Read.
        MemoryBlock block{m_Command.lpMemBlock, 0};
        m_Block = &block;
        int code = ReadToBlock(member);
        m_Block = nullptr;
        m_Command.returnCount = static_cast<int>(block.Used);
        return code;
    }

    int ReadToBlock(const Member& member) {
        if (member.IsFolder) {
            return kUnzipOk;
        }
        FilePtr data;
        if (int code = OpenMember(member, data); code != kUnzipOk) {
            return code;
        }
        const std::string text = Status(132, "Unzipping to memory: %s", member.Ansi);
        for (;;) {
            std::size_t room = static_cast<std::size_t>(member.Stat.size) - m_Block->Used;
            char extra = 0;
            // One byte past the member's size shows a member that lies.
            zip_int64_t got = room > 0 ? zip_fread(data.get(), m_Block->Data + m_Block->Used, room)
                                       : zip_fread(data.get(), &extra, 1);
            if (got < 0) {
                return CodeOfError(zip_error_code_zip(zip_file_get_error(data.get())));
            }
            if (got == 0) {
                break;
            }
            if (room == 0) {
                return kUnzipBadStructure;
            }
            m_Block->Used += static_cast<std::size_t>(got);
            long percent = static_cast<long>(m_Block->Used * 100 / member.Stat.size);
            if (!Report(m_Command.lpMinorStatus, m_Command.lpMinorUserData, text, percent)) {
                return kUnzipAbortedByApp;
            }
        }
        return m_Block->Used == member.Stat.size ? kUnzipOk : kUnzipBadStructure;
    }

    struct MemoryBlock {
        char* Data;
        std::size_t Used;
    };

    UNZIPCMDSTRUCT& m_Command;
    ArchiveInput& m_Input;
    ZipPtr m_Zip;
    std::vector<Member> m_Members;
    std::uint64_t m_ArchiveSize = 0;
    std::uint64_t m_Output = 0;
    std::uint64_t m_OutputLimit = kDefaultOutputLimit;
    MemoryBlock* m_Block = nullptr;
};

}  // namespace

std::string NativePath(const char* path) {
    return path == nullptr ? std::string() : os::ToNativePath(path);
}

int Run(UNZIPCMDSTRUCT& command, ArchiveInput& input) {
    return Runner(command, input).Run();
}

}  // namespace nvk::unzip
