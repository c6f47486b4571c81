// EIniFile: opening under the share modes, writing back, and the profile
// calls on top of them.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "nvk/config/ini_file.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/sync.h"

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

bool EIniFile::Open(bool readOnly, bool /*unused*/) {
    if (m_Opened) {
        return false;
    }
    // A writer shares nothing, so it excludes every other open; a reader
    // shares reading, so it excludes writers only.
    const os::DWORD access = readOnly ? os::GENERIC_READ : os::GENERIC_READ | os::GENERIC_WRITE;
    const os::DWORD share = readOnly ? os::FILE_SHARE_READ : 0;
    const os::DWORD creation = readOnly ? os::OPEN_EXISTING : os::OPEN_ALWAYS;
    const os::DWORD start = os::GetTickCount();
    os::HANDLE file = os::INVALID_HANDLE_VALUE;
    os::DWORD error = os::ERROR_SUCCESS;
    for (;;) {
        file = os::CreateFileA(m_FileName, access, share, nullptr, creation,
                               os::FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != os::INVALID_HANDLE_VALUE) {
            break;
        }
        error = os::GetLastError();
        if (error != os::ERROR_SHARING_VIOLATION) {
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

    Chaine text;
    const os::DWORD size = os::GetFileSize(file, nullptr);
    // Text positions are signed 32-bit numbers.
    bool read = size < 0x7FFFFFFF;
    if (read && size > 0) {
        os::DWORD got = 0;
        char* bytes = text.SetLength(static_cast<int>(size));
        read = os::SetFilePointer(file, 0, nullptr, os::FILE_BEGIN) == 0 &&
               os::ReadFile(file, bytes, size, &got, nullptr) && got == size;
    }
    if (!read) {
        os::CloseHandle(file);
        return false;
    }
    ReadInData(text);
    m_Writable = !readOnly;
    if (readOnly) {
        os::CloseHandle(file);
    } else {
        m_Handle = file;
    }
    return true;
}

bool EIniFile::WriteBack() {
    const Chaine text = AsChaine();
    const auto size = static_cast<os::DWORD>(text.Length());
    os::DWORD written = 0;
    os::SetFilePointer(m_Handle, 0, nullptr, os::FILE_BEGIN);
    os::WriteFile(m_Handle, text.c_str(), size, &written, nullptr);
    os::SetEndOfFile(m_Handle);
    return written == size;
}

bool EIniFile::Close() {
    const bool result = m_Writable && m_Handle != os::INVALID_HANDLE_VALUE ? WriteBack() : true;
    if (m_Handle != os::INVALID_HANDLE_VALUE) {
        os::CloseHandle(m_Handle);
        m_Handle = os::INVALID_HANDLE_VALUE;
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
