// The entry "dzip": one command of the record, carried out with libzip.
#include <cstring>
#include <vector>

#include "ansi_text.h"
#include "archive_target.h"
#include "file_source.h"
#include "items.h"
#include "job.h"
#include "operations_log.h"
#include "os/api/file.h"

namespace zipengine {

using namespace nvk::os;

namespace {

// Unix modes for the readers that take them, the Windows attributes in the
// low byte for the others.
constexpr zip_uint32_t kFolderMode = 040755;
constexpr zip_uint32_t kFileMode = 0100644;
constexpr zip_uint32_t kReadOnlyFileMode = 0100444;

bool StoredBySuffix(ZIPCMDSTRUCT const& command, std::string const& name) {
    if (command.dontCompressTheseSuffixesFlag == 0 || command.lpszStoreSuffixes == nullptr) {
        return false;
    }
    // ".zip:.jpg;.png" or "zip jpg": separators between suffixes, dots optional.
    std::string list = command.lpszStoreSuffixes;
    std::size_t at = 0;
    while (at < list.size()) {
        std::size_t end = list.find_first_of(":; ,", at);
        end = end == std::string::npos ? list.size() : end;
        std::string suffix = list.substr(at, end - at);
        at = end + 1;
        if (!suffix.empty() && suffix[0] != '.') {
            suffix.insert(0, ".");
        }
        if (!suffix.empty() && name.size() > suffix.size() &&
            MatchesWildcard(suffix, name.substr(name.size() - suffix.size()))) {
            return true;
        }
    }
    return false;
}

class Command {
public:
    Command(Job& job, zip_t* archive)
        : m_job(job), m_command(job.Command()), m_archive(archive), m_log(job) {}

    // Entries of the items: folders, then files read by sources of ours.
    int Store(std::vector<Item> const& items) {
        int count = 0;
        for (Item const& item : items) {
            count += item.folder ? 0 : 1;
        }
        int number = 0;
        bool selected = false;
        for (Item const& item : items) {
            std::string name = NameToUtf8(item.name);
            zip_int64_t existing = zip_name_locate(
                m_archive, (name + (item.folder ? "/" : "")).c_str(), ZIP_FL_NOCASE);
            if (!Wanted(item, existing)) {
                continue;
            }
            selected = true;
            if (item.folder) {
                if (existing < 0 && !AddFolder(item, name)) {
                    return m_job.CodeOf(zip_get_error(m_archive), ZE_PARMS);
                }
                continue;
            }
            if (!AddFile(item, name, existing, ++number, count)) {
                return m_job.CodeOf(zip_get_error(m_archive), ZE_PARMS);
            }
            m_added.push_back(item.source);
        }
        return selected || !items.empty() ? ZE_OK : ZE_NONE;
    }

    int Delete() {
        std::vector<std::string> patterns;
        for (std::string const& item : SplitItems(m_command.lpszItemList)) {
            std::string pattern = NameToUtf8(item);
            for (char& c : pattern) {
                c = c == '\\' ? '/' : c;
            }
            patterns.push_back(pattern);
        }
        bool deleted = false;
        zip_int64_t entries = zip_get_num_entries(m_archive, 0);
        for (zip_int64_t index = 0; index < entries; ++index) {
            char const* name = zip_get_name(m_archive, static_cast<zip_uint64_t>(index), 0);
            // A folder's entry goes with its name or with its contents'.
            std::string full = name == nullptr ? "" : name;
            std::string plain = full.ends_with('/') ? full.substr(0, full.size() - 1) : full;
            for (std::string const& pattern : patterns) {
                if (MatchesWildcard(pattern, plain) || MatchesWildcard(pattern, full)) {
                    zip_delete(m_archive, static_cast<zip_uint64_t>(index));
                    m_log.Add(704, name);
                    deleted = true;
                    break;
                }
            }
        }
        return deleted ? ZE_OK : ZE_NONE;
    }

    int FromMemory() {
        std::vector<std::string> names = SplitItems(m_command.lpszItemList);
        if (names.size() != 1 || m_command.lMemBlockSize < 0 ||
            (m_command.lpMemBlock == nullptr && m_command.lMemBlockSize > 0)) {
            return ZE_PARMS;
        }
        std::string name = NameToUtf8(names[0]);
        zip_source_t* source = zip_source_buffer(
            m_archive, m_command.lpMemBlock, static_cast<zip_uint64_t>(m_command.lMemBlockSize), 0);
        zip_int64_t index = source == nullptr ? -1
                                              : zip_file_add(m_archive, name.c_str(), source,
                                                             ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE);
        if (index < 0) {
            zip_source_free(source);
            return m_job.CodeOf(zip_get_error(m_archive), ZE_PARMS);
        }
        if (!Finish(static_cast<zip_uint64_t>(index), name, FILE_ATTRIBUTE_ARCHIVE)) {
            return m_job.CodeOf(zip_get_error(m_archive), ZE_PARMS);
        }
        m_log.Add(705, name);
        return ZE_OK;
    }

    // The archive's comment, made UTF-8 for the library and the readers.
    bool Comment() {
        if (m_command.addCommentFlag == 0) {
            return true;
        }
        std::string comment =
            AnsiToUtf8(m_command.lpszComment == nullptr ? "" : m_command.lpszComment);
        return zip_set_archive_comment(m_archive, comment.c_str(),
                                       static_cast<zip_uint16_t>(comment.size())) == 0;
    }

    // After the archive is written: the sources that the record asks to
    // move, and the log.
    void Done() {
        if (m_command.deleteOriginalFlag != 0) {
            for (std::string const& source : m_added) {
                DeleteFileA(source.c_str());
            }
        }
        m_log.Write(m_command.lpszZIPFile);
    }

private:
    bool Wanted(Item const& item, zip_int64_t existing) {
        int function = m_command.function;
        if (function == ZIP_FRESHEN && existing < 0) {
            return false;
        }
        if ((function == ZIP_FRESHEN || function == ZIP_UPDATE) && existing >= 0) {
            zip_stat_t stat;
            if (zip_stat_index(m_archive, static_cast<zip_uint64_t>(existing), 0, &stat) == 0 &&
                (stat.valid & ZIP_STAT_MTIME) != 0) {
                return TimeOfDos(item.dosDate, item.dosTime) > stat.mtime;
            }
        }
        return true;
    }

    bool AddFolder(Item const& item, std::string const& name) {
        zip_int64_t index = zip_dir_add(m_archive, name.c_str(), ZIP_FL_ENC_UTF_8);
        if (index < 0) {
            return false;
        }
        zip_uint64_t at = static_cast<zip_uint64_t>(index);
        m_log.Add(703, item.name + "/");
        // A folder is never encrypted, so its time may be set on the entry.
        return zip_file_set_dostime(m_archive, at, static_cast<zip_uint16_t>(item.dosTime),
                                    static_cast<zip_uint16_t>(item.dosDate), 0) == 0 &&
               zip_file_set_external_attributes(m_archive, at, 0, ZIP_OPSYS_UNIX,
                                                (kFolderMode << 16) | (item.attributes & 0xFF)) ==
                   0;
    }

    bool AddFile(Item const& item, std::string const& name, zip_int64_t existing, int number,
                 int count) {
        zip_source_t* source =
            FileSource(m_archive, m_job, item.source, item.dosDate, item.dosTime, number, count);
        if (source == nullptr) {
            return false;
        }
        zip_int64_t index =
            existing >= 0
                ? (zip_file_replace(m_archive, static_cast<zip_uint64_t>(existing), source, 0) == 0
                       ? existing
                       : -1)
                : zip_file_add(m_archive, name.c_str(), source, ZIP_FL_ENC_UTF_8);
        if (index < 0) {
            zip_source_free(source);
            return false;
        }
        m_log.Add(703, item.name);
        return Finish(static_cast<zip_uint64_t>(index), item.name, item.attributes);
    }

    // Method, password and attributes of a new entry.
    bool Finish(zip_uint64_t index, std::string const& name, zip_uint32_t attributes) {
        bool store = m_command.compFactor == 0 || StoredBySuffix(m_command, name);
        zip_uint32_t mode =
            (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? kReadOnlyFileMode : kFileMode;
        if (zip_set_file_compression(m_archive, index, store ? ZIP_CM_STORE : ZIP_CM_DEFLATE,
                                     store ? 0 : static_cast<zip_uint32_t>(m_command.compFactor)) !=
                0 ||
            zip_file_set_external_attributes(m_archive, index, 0, ZIP_OPSYS_UNIX,
                                             (mode << 16) | (attributes & 0xFF)) != 0) {
            return false;
        }
        return m_command.encryptFlag == 0 ||
               zip_file_set_encryption(m_archive, index, ZIP_EM_TRAD_PKWARE,
                                       m_command.lpszEncryptCode) == 0;
    }

    Job& m_job;
    ZIPCMDSTRUCT& m_command;
    zip_t* m_archive;
    OperationsLog m_log;
    std::vector<std::string> m_added;
};

int CheckRecord(ZIPCMDSTRUCT const& command) {
    if (command.lpszZIPFile == nullptr || command.lpszZIPFile[0] == '\0') {
        return ZE_NAME;
    }
    if ((command.wMultiVolControl & MV_USE_MULTI) != 0) {
        return ZE_MULTI_PARAMS;
    }
    bool known = command.function >= ZIP_FRESHEN && command.function <= ZIP_MEMTOFILE;
    bool passwordMissing = command.encryptFlag != 0 && (command.lpszEncryptCode == nullptr ||
                                                        command.lpszEncryptCode[0] == '\0');
    if (!known || command.compFactor < 0 || command.compFactor > 9 || passwordMissing) {
        return ZE_PARMS;
    }
    return ZE_OK;
}

// A name as a pattern that matches itself alone, without regard to case.
std::string Escaped(std::string name) {
    for (char& c : name) {
        c = c == '*' || c == '?' ? '?' : c;
    }
    return name;
}

// The caller's rename procedure settles each entry's name and time, and
// names that come twice keep their first file.
void Rename(Job& job, std::vector<Item>& items) {
    ZIPCMDSTRUCT& command = job.Command();
    std::vector<Item> kept;
    for (Item& item : items) {
        if (command.lpRenameProc != nullptr) {
            ZIPRENAMEREC record{};
            std::strncpy(record.szNewName, item.name.c_str(), sizeof(record.szNewName) - 1);
            std::strncpy(record.szSourcePath, item.source.c_str(), sizeof(record.szSourcePath) - 1);
            record.dosDate = item.dosDate;
            record.dosTime = item.dosTime;
            record.attributes = item.attributes;
            if (command.lpRenameProc(&record, command.lpRenameUserData) == 0 &&
                record.szNewName[0] != '\0') {
                record.szNewName[sizeof(record.szNewName) - 1] = '\0';
                item.name = record.szNewName;
                item.dosDate = record.dosDate;
                item.dosTime = record.dosTime;
                item.attributes = record.attributes;
            }
        }
        bool repeated = false;
        for (Item const& other : kept) {
            repeated =
                repeated || (other.folder == item.folder && other.name.size() == item.name.size() &&
                             MatchesWildcard(Escaped(other.name), item.name));
        }
        if (repeated) {
            job.Warn(149, "cannot repeat names in zip file:", item.name);
        } else {
            kept.push_back(std::move(item));
        }
    }
    items = std::move(kept);
}

int Cancelled(zip_t*, void* userData) {
    return static_cast<Job*>(userData)->Aborted() ? 1 : 0;
}

int Run(Job& job) {
    ZIPCMDSTRUCT& command = job.Command();
    int function = command.function;
    job.MajorStatus(job.Text(150, "processing the list of files"), 0);
    std::vector<Item> items;
    if (function != ZIP_DELETE && function != ZIP_MEMTOFILE) {
        items = SelectItems(job);
        if (job.Failure() != ZE_OK) {
            return job.Failure();
        }
        if (items.empty()) {
            return ZE_NONE;
        }
        Rename(job, items);
    }
    std::string tempFolder =
        command.pathForTempFlag != 0 && command.lpszTempPath != nullptr ? command.lpszTempPath : "";
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* target = ArchiveTarget(job, command.lpszZIPFile, tempFolder, &error);
    bool creates = function == ZIP_ADD || function == ZIP_UPDATE || function == ZIP_MEMTOFILE;
    zip_t* archive = target == nullptr
                         ? nullptr
                         : zip_open_from_source(target, creates ? ZIP_CREATE : 0, &error);
    if (archive == nullptr) {
        zip_source_free(target);
        int code = job.CodeOf(&error, creates ? ZE_CREAT : ZE_OPEN);
        zip_error_fini(&error);
        return code;
    }
    zip_error_fini(&error);
    zip_register_cancel_callback_with_state(archive, Cancelled, nullptr, &job);
    Command run(job, archive);
    int result = function == ZIP_DELETE      ? run.Delete()
                 : function == ZIP_MEMTOFILE ? run.FromMemory()
                                             : run.Store(items);
    if (result == ZE_OK && !run.Comment()) {
        result = ZE_NOTE;
    }
    job.MajorStatus(job.Text(155, "adding files to zip file"), 0);
    if (result != ZE_OK || job.Aborted()) {
        zip_discard(archive);
        return result != ZE_OK ? result : ZE_ABORTED;
    }
    if (zip_close(archive) != 0) {
        result = job.CodeOf(zip_get_error(archive), ZE_CREAT);
        zip_discard(archive);
        return result;
    }
    run.Done();
    job.MajorStatus(job.Text(155, "adding files to zip file"), 100);
    return ZE_OK;
}

}  // namespace

}  // namespace zipengine

// Everything a run needs lives in the caller's record and on the stack, so
// threads may run commands at the same time.
extern "C" __attribute__((visibility("default"))) int dzip(ZIPCMDSTRUCT* command) {
    if (command == nullptr) {
        return ZE_PARMS;
    }
    if (int problem = zipengine::CheckRecord(*command); problem != ZE_OK) {
        return problem;
    }
    zipengine::Job job(*command);
    return zipengine::Run(job);
}
