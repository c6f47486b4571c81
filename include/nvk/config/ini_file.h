// EIniFile: a whole INI file held in memory as ordered sections, so that it
// can be read, changed and written back with its preamble, its sections'
// leading comments, its lines without a name and the order of everything.
//
// The file is opened with the operating system's share modes as the lock: an
// object open for writing keeps its handle, and so the file, from Open to
// Close; a read-only open holds the file only while it reads. Other parties
// retry every 50 ms up to the process-wide time-out. Close puts a whole new
// file in place of the old one in one step, so the file never holds part of
// a text.
//
// The profile calls work on an open object as they find it, or open and
// close the file around themselves when the object is closed.
#pragma once

#include <memory>

#include "nvk/core/chaine.h"
#include "nvk/core/dictionnary.h"
#include "nvk/core/tableau.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

namespace nvk {
class IniText;
}

class NVKUTIL_EXPORT EIniFile {
public:
    class SectionDesc {
    public:
        SectionDesc() = default;
        // The argument plays no part: a section knows nothing of its name.
        explicit SectionDesc(const Chaine& name);

        // The value, created empty (at the end of the order) if missing.
        Chaine& operator[](const Chaine& name) { return NamedLine(name); }
        // The value, or an empty value.
        Chaine operator[](const Chaine& name) const;
        // Unnamed line i; the lines grow to i + 1 if needed.
        Chaine& operator[](unsigned int i);
        // Unnamed line i, or an empty value if there is none.
        Chaine operator[](unsigned int i) const;

        // The value of the named line at place i of the order; the order grows
        // to i + 1 with empty names, as the unnamed lines do.
        Chaine& GetLine(unsigned int i);
        // The same without growth: an empty value beyond the order.
        const Chaine& GetLine(unsigned int i) const;
        Chaine GetLineName(unsigned int i);

        bool Exist(const Chaine& name) const { return m_NamedLines.Exist(name); }
        unsigned int GetNamedLinesNB() const { return Unsigned(m_NamedLines.Count()); }
        unsigned int UnNamedSize() { return Unsigned(m_UnNamedLines.Size()); }
        void GetUnNamedLines(PTableau<Chaine>& lines) const { lines = m_UnNamedLines; }
        void SetUnNamedLines(const PTableau<Chaine>& lines) {
            Forget();
            m_UnNamedLines = lines;
        }

        // Files one line of the file under this section.
        void AddLine(const Chaine& line);
        bool RemoveLine(const Chaine& name);
        void Clean();
        // The body as written: comments, named lines in order, unnamed lines,
        // each ended by "\r\n".
        Chaine AsChaine();

    protected:
        Chaine& NamedLine(const Chaine& name);

    private:
        friend class EIniFile;
        static unsigned int Unsigned(int n) { return static_cast<unsigned int>(n); }
        // Files a line; true when writing the section back gives the line as
        // it stands, at the place it came in.
        bool AddLine(const char* text, int length);
        // Files the `size` bytes of `file` at `first`, a line of the file's
        // text; `asWritten` when "\r\n" follows them in the file.
        void ReadLine(const Chaine& file, int first, int size, bool asWritten);
        // The lines may change from here on: the body is built from them.
        void Forget();
        void AppendTo(nvk::IniText& text) const;

        PTableau<Chaine> m_Comments;
        // Searches move the map's cursor, also those of const lookups.
        mutable FDictionnaryNoCase<Chaine> m_NamedLines;
        PTableau<Chaine> m_LineOrder;
        PTableau<Chaine> m_UnNamedLines;
        Chaine m_Empty;
        // A section read from a file whose lines stood there exactly as they
        // are written back, one after the other, keeps their place in the
        // file's text, which is shared rather than copied: an unchanged
        // section is then written back in one copy, not line by line. Length
        // 0 while no line is in; -1 once the body has to be built from the
        // lines, which lasts: a value handed out by reference may change at
        // any later time.
        Chaine m_File;
        int m_KeptStart = 0;
        int m_KeptLength = 0;
    };

    EIniFile() = default;
    explicit EIniFile(const Chaine& fileName) : m_FileName(fileName) {}
    // A copy shares the contents and takes the handle and flags as they are:
    // the copy and the original then stand for the same open. Once one of
    // them closes, the other's handle is no longer valid and its Close
    // writes nothing and returns false. The system may give the closed
    // handle's number to the next file opened, so the copies also share a
    // flag that says whether the handle is still open, and the later Close
    // never writes through a number that now names another file.
    EIniFile(const EIniFile&) = default;
    EIniFile& operator=(const EIniFile&) = default;
    // A file open for writing is saved here.
    virtual ~EIniFile();

    // The section, created at the end of the order if missing.
    SectionDesc& operator[](const Chaine& name) { return Section(name); }
    // The section, or one that stays empty.
    const SectionDesc& operator[](const Chaine& name) const { return Section(name); }
    // The section named at place i of the order; the order grows to i + 1
    // with empty names, and a missing section is created.
    SectionDesc& operator[](unsigned int i);
    const SectionDesc& operator[](unsigned int i) const;

    bool SectionExist(const Chaine& name) const { return m_Sections.Exist(name); }
    unsigned int GetSectionNB() const { return static_cast<unsigned int>(m_Sections.Count()); }
    const Chaine GetSectionName(unsigned int i) const;
    PTableau<Chaine> GetSectionNames() const { return m_SectionOrder; }

    // Replaces the contents with those of `text`, and leaves the object open
    // and writable with no file behind it. Nothing happens on an open object.
    void ReadInData(const Chaine& text);
    // The whole file as Close writes it.
    Chaine AsChaine() const;

    // The second argument of each Open is accepted and has no effect.
    bool Open(bool readOnly, bool unused = false);
    bool Open(const Chaine& fileName, bool readOnly, bool unused = false);
    // A name given as text would otherwise pass as the first flag.
    bool Open(const char* fileName, bool readOnly, bool unused = false) {
        return Open(Chaine(fileName), readOnly, unused);
    }
    bool Close();
    void SetFileName(const Chaine& fileName);
    const Chaine& GetFileName() const { return m_FileName; }
    // Milliseconds for which Open retries a file that another party holds.
    static void SetTimeOut(int milliseconds) { m_TimeOut = milliseconds; }

    // The platform's profile calls. An empty file name means the object's;
    // another replaces it on a closed object and is ignored on an open one.
    // A read into a buffer of size 0 returns 0 and writes nothing: copying
    // "size - 1" characters and a terminator would write before the buffer.
    unsigned int GetPrivateProfileStringA(const Chaine& section, const Chaine& key,
                                          const Chaine& defaultValue, char* buffer,
                                          unsigned long size, const Chaine& fileName) const;
    int GetPrivateProfileIntA(const Chaine& section, const Chaine& key, int defaultValue,
                              const Chaine& fileName) const;
    unsigned int WritePrivateProfileStringA(const Chaine& section, const Chaine& key,
                                            const Chaine& value, const Chaine& fileName);
    // Unlike the text form, an empty value is stored, and a missing section
    // joins the sections but not their order: Close writes it last.
    unsigned int WritePrivateProfileInt(const Chaine& section, const Chaine& key, int value,
                                        const Chaine& fileName);

    // Adds or removes `line` among the section's unnamed lines, as a set
    // that ignores case.
    bool ManageLines(const Chaine& section, const Chaine& line, bool add);
    // Removes a named line, or with an empty name the whole section. A
    // closed object opens read-only: the change is reported and discarded.
    bool RemoveLine(const Chaine& section, const Chaine& name);
    bool RemoveSection(const Chaine& section);
    bool ChangeSectionName(const Chaine& oldName, const Chaine& newName);

protected:
    SectionDesc& Section(const Chaine& name);
    const SectionDesc& Section(const Chaine& name) const;

    // Searches move the map's cursor, also those of const lookups.
    mutable FDictionnaryNoCase<SectionDesc> m_Sections;
    PTableau<Chaine> m_SectionOrder;
    Chaine m_FileName;
    Chaine m_Preamble;
    SectionDesc m_EmptySection;
    bool m_Writable = false;
    bool m_Opened = false;
    nvk::os::HANDLE m_Handle = nvk::os::INVALID_HANDLE_VALUE;
    // Shared by the copies of one open: true until one of them closes it.
    std::shared_ptr<bool> m_HandleOpen;

    static int m_TimeOut;

private:
    // The profile calls open a closed object around themselves.
    class Session;

    // The file-name rule of the profile calls: an empty name keeps the
    // object's, and an open object keeps its own.
    void TakeFileName(const Chaine& fileName);
    void Reset();
    bool WriteBack();
};
