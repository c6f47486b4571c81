// EIniFile: opening under the share modes, writing back, and the profile
// calls on top of them.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "nvk/config/ini_file.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_replace.h"
#include "os/api/sync.h"
#include "os/api/temp_file.h"

namespace os = nvk::os;

int EIniFile::m_TimeOut = 1000;

// Opens a closed object for the length of one profile call and closes it
// again; an object found open is used as it is.
class EIniFile::Session {
public:
    // `needsWritable` refuses an object found open read-only.
    Session(EIniFile& ini, bool readOnly, bool needsWritable) : m_Ini(ini) {
        if (!ini.m_Opened) {
            m_Closes = ini.Open(readOnly, false);
            m_Ready = m_Closes;
        } else {
            m_Ready = !needsWritable || ini.m_Writable;
        }
    }
    ~Session() {
        if (m_Closes) {
            m_Ini.Close();
        }
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    bool Ready() const { return m_Ready; }

private:
    EIniFile& m_Ini;
    bool m_Closes = false;
    bool m_Ready = false;
};

EIniFile::~EIniFile() {
    if (m_Opened) {
        Close();
    }
}

void EIniFile::SetFileName(const Chaine& fileName) {
    if (!m_Opened) {
        m_FileName = fileName;
    }
}

void EIniFile::TakeFileName(const Chaine& fileName) {
    if (!fileName.IsEmpty()) {
        SetFileName(fileName);
    }
}

bool EIniFile::Open(const Chaine& fileName, bool readOnly, bool unused) {
    SetFileName(fileName);
    return Open(readOnly, unused);
}

namespace {

// Reads the whole file into `text`: ERROR_SUCCESS, or why it could not.
os::DWORD ReadAll(os::HANDLE file, Chaine& text) {
    const os::DWORD size = os::GetFileSize(file, nullptr);
    // Text positions are signed 32-bit numbers.
    if (size >= 0x7FFFFFFF) {
        return size == os::INVALID_FILE_SIZE ? os::GetLastError() : os::ERROR_NOT_ENOUGH_MEMORY;
    }
    text.Empty();
    if (size == 0) {
        return os::ERROR_SUCCESS;
    }
    os::DWORD got = 0;
    char* bytes = text.SetLength(static_cast<int>(size));
    if (os::SetFilePointer(file, 0, nullptr, os::FILE_BEGIN) != 0 ||
        !os::ReadFile(file, bytes, size, &got, nullptr)) {
        return os::GetLastError();
    }
    return got == size ? os::ERROR_SUCCESS : os::ERROR_HANDLE_EOF;
}

// The path of the file that a handle has open, links resolved, in the form
// that the other file calls take.
Chaine FinalPath(os::HANDLE file) {
    char path[4 * os::MAX_PATH];
    const os::DWORD length = os::GetFinalPathNameByHandleA(
        file, path, sizeof path, os::FILE_NAME_NORMALIZED | os::VOLUME_NAME_DOS);
    if (length == 0 || length >= sizeof path) {
        return Chaine();
    }
    if (std::strncmp(path, "\\\\?\\UNC\\", 8) == 0) {
        return Chaine("\\\\") + (path + 8);
    }
    return Chaine(std::strncmp(path, "\\\\?\\", 4) == 0 ? path + 4 : path);
}

}  // namespace

bool EIniFile::Open(bool readOnly, bool /*unused*/) {
    if (m_Opened) {
        return false;
    }
    // A reader shares reading, so it excludes writers only. A writer shares
    // reading and deletion, which ReplaceFileA's own open of the file asks
    // for when Close puts a new file in place of this one; every other open
    // still fails on it while it holds the file: a reader's, as it shares no
    // writing, and a writer's, as it writes.
    const os::DWORD access = readOnly ? os::GENERIC_READ : os::GENERIC_READ | os::GENERIC_WRITE;
    const os::DWORD share =
        readOnly ? os::FILE_SHARE_READ : os::FILE_SHARE_READ | os::FILE_SHARE_DELETE;
    const os::DWORD creation = readOnly ? os::OPEN_EXISTING : os::OPEN_ALWAYS;
    const os::DWORD start = os::GetTickCount();
    os::HANDLE file = os::INVALID_HANDLE_VALUE;
    os::DWORD error = os::ERROR_SUCCESS;
    Chaine text;
    for (;;) {
        file = os::CreateFileA(m_FileName, access, share, nullptr, creation,
                               os::FILE_ATTRIBUTE_NORMAL, nullptr);
        error = file != os::INVALID_HANDLE_VALUE ? ReadAll(file, text) : os::GetLastError();
        if (error == os::ERROR_SUCCESS) {
            break;
        }
        if (file != os::INVALID_HANDLE_VALUE) {
            os::CloseHandle(file);
            file = os::INVALID_HANDLE_VALUE;
        }
        // Another program's lock over the bytes refuses the read: it holds
        // the file as much as an open that shares nothing.
        if (error != os::ERROR_SHARING_VIOLATION && error != os::ERROR_LOCK_VIOLATION) {
            break;
        }
        os::Sleep(50);
        if (static_cast<int>(os::GetTickCount() - start) >= m_TimeOut) {
            break;
        }
    }
    if (file == os::INVALID_HANDLE_VALUE) {
        // A missing file is no failure for a reader: it reads as empty.
        if (readOnly && error == os::ERROR_FILE_NOT_FOUND) {
            m_Opened = true;
            m_Writable = false;
            m_Handle = os::INVALID_HANDLE_VALUE;
            return true;
        }
        return false;
    }
    ReadInData(text);
    m_Writable = !readOnly;
    if (readOnly) {
        os::CloseHandle(file);
    } else {
        m_Handle = file;
        m_HandleOpen = std::make_shared<bool>(true);
    }
    return true;
}

// Rewriting the file in place (seek to 0, one write, cut at the end) left a
// writer stopped during the write with a mix of new and old bytes, one
// stopped before the cut with the new text followed by the tail of the old,
// and a short write (a full disk, a quota, a file-size limit) cut the file to
// what was written while the profile call reported success. So the new text
// is written whole into a temporary file of the file's own folder, flushed,
// and put in place of the file in one step while this object still holds it:
// the file always holds either its whole old text or its whole new one. The
// replacement keeps the file's permissions and, through a link, replaces what
// the link leads to. Opens that waited meanwhile reach the new file, never the
// replaced one. On any failure the file keeps its old text and the temporary
// file goes.
bool EIniFile::WriteBack() {
    const Chaine target = FinalPath(m_Handle);
    char temporary[os::MAX_PATH];
    if (target.IsEmpty() || os::GetTempFileNameA(target.GetFolder(), "ini", 0, temporary) == 0) {
        return false;
    }
    const Chaine text = AsChaine();
    const auto size = static_cast<os::DWORD>(text.Length());
    os::HANDLE file = os::CreateFileA(temporary, os::GENERIC_WRITE, 0, nullptr,
                                      os::TRUNCATE_EXISTING, os::FILE_ATTRIBUTE_NORMAL, nullptr);
    os::DWORD written = 0;
    bool done = file != os::INVALID_HANDLE_VALUE &&
                os::WriteFile(file, text.c_str(), size, &written, nullptr) && written == size &&
                os::FlushFileBuffers(file);
    if (file != os::INVALID_HANDLE_VALUE) {
        done = os::CloseHandle(file) && done;
    }
    done = done && os::ReplaceFileA(target, temporary, nullptr, 0, nullptr, nullptr);
    if (!done) {
        os::DeleteFileA(temporary);
    }
    return done;
}

bool EIniFile::Close() {
    bool result = true;
    if (m_Handle != os::INVALID_HANDLE_VALUE) {
        // A copy closed the handle already: its number is no longer ours.
        result = m_HandleOpen && *m_HandleOpen;
        if (result) {
            result = !m_Writable || WriteBack();
            os::CloseHandle(m_Handle);
            *m_HandleOpen = false;
        }
        m_Handle = os::INVALID_HANDLE_VALUE;
        m_HandleOpen.reset();
    }
    m_Writable = false;
    m_Opened = false;
    Reset();
    return result;
}

unsigned int EIniFile::GetPrivateProfileStringA(const Chaine& section, const Chaine& key,
                                                const Chaine& defaultValue, char* buffer,
                                                unsigned long size, const Chaine& fileName) const {
    // The profile calls read like the platform's, but a closed object opens
    // and closes itself around them.
    auto& self = const_cast<EIniFile&>(*this);
    self.TakeFileName(fileName);
    const Session session(self, true, false);
    if (!session.Ready() || buffer == nullptr || size == 0) {
        return 0;
    }
    // A missing section reads as one that stays empty.
    const SectionDesc& desc = Section(section);
    Chaine text = desc.Exist(key) ? desc[key] : defaultValue;
    text.TrimRight('"');
    text.TrimLeft('"');
    const auto length = static_cast<unsigned long>(text.Length());
    if (size > length) {
        std::memcpy(buffer, text.c_str(), length + 1);
        return static_cast<unsigned int>(length);
    }
    std::memcpy(buffer, text.c_str(), size - 1);
    buffer[size - 1] = '\0';
    return static_cast<unsigned int>(size - 1);
}

int EIniFile::GetPrivateProfileIntA(const Chaine& section, const Chaine& key, int defaultValue,
                                    const Chaine& fileName) const {
    auto& self = const_cast<EIniFile&>(*this);
    self.TakeFileName(fileName);
    const Session session(self, true, false);
    const SectionDesc& desc = Section(section);
    if (!session.Ready() || !desc.Exist(key)) {
        return defaultValue;
    }
    Chaine text = desc[key];
    text.TrimLeft(' ');
    text.TrimRight(' ');
    // As atoi: leading digits, and 0 for a text that is no number.
    return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

unsigned int EIniFile::WritePrivateProfileStringA(const Chaine& section, const Chaine& key,
                                                  const Chaine& value, const Chaine& fileName) {
    TakeFileName(fileName);
    const Session session(*this, false, true);
    if (!session.Ready()) {
        return 0;
    }
    if (key.IsEmpty()) {
        RemoveSection(section);
    } else if (value.IsEmpty()) {
        Section(section).RemoveLine(key);
    } else {
        Section(section)[key] = value;
    }
    return 1;
}

unsigned int EIniFile::WritePrivateProfileInt(const Chaine& section, const Chaine& key, int value,
                                              const Chaine& fileName) {
    TakeFileName(fileName);
    const Session session(*this, false, true);
    if (!session.Ready()) {
        return 0;
    }
    if (key.IsEmpty()) {
        RemoveSection(section);
        return 1;
    }
    char digits[16];
    std::snprintf(digits, sizeof digits, "%d", value);
    // Into the dictionary only: a new section stays out of the order.
    m_Sections[section][key] = digits;
    return 1;
}

bool EIniFile::ManageLines(const Chaine& section, const Chaine& line, bool add) {
    const Session session(*this, false, true);
    if (!session.Ready()) {
        return false;
    }
    SectionDesc& desc = Section(section);
    PTableau<Chaine> lines;
    desc.GetUnNamedLines(lines);
    int found = -1;
    for (int i = 0; i < lines.Size() && found == -1; ++i) {
        if (lines[i].EqualsNoCase(line)) {
            found = i;
        }
    }
    if (add && found == -1) {
        lines.Add(line);
    } else if (!add && found != -1) {
        lines.Remove(1, found);
    }
    desc.SetUnNamedLines(lines);
    return true;
}

bool EIniFile::RemoveLine(const Chaine& section, const Chaine& name) {
    // A closed object opens read-only here, so its Close discards the change.
    const Session session(*this, true, true);
    if (!session.Ready() || !SectionExist(section)) {
        return false;
    }
    if (name.IsEmpty()) {
        return RemoveSection(section);
    }
    return Section(section).RemoveLine(name);
}
