// Writing members below a destination folder without leaving it: names are
// checked before anything is made, folders are walked one at a time without
// going through links, and each file is written under a temporary name and
// put in place only when it is whole. The walk and the writes are the
// platform's (safe_output_posix.cpp, safe_output_win32.cpp).
#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace nvk::unzip {

// Whether names on disk are text (Windows: characters, so a member goes there
// under its name read as UTF-8) or bytes (POSIX: the bytes it was stored
// with).
extern const bool kNamesAreText;
// The characters that separate the folders of a native path.
extern const char kNativeSeparators[];
// Whether the disk can hold `part` as one name, as it stands.
bool FitsDisk(const std::string& part);

// The folders of a member's name, or an empty list when the name is not safe
// to extract: absolute, with a drive, with a ".." component, with a name the
// disk cannot hold as it stands, or naming nothing. Backslashes separate
// folders too; "." components are dropped.
std::vector<std::string> SafeComponents(const std::string& name);

class Destination {
    // An open folder of the walk, held so that it cannot be swapped for a
    // link while something is made below it.
    struct NativeFolder;
    struct CloseFolder {
        void operator()(NativeFolder* folder) const;
    };
    using FolderPtr = std::unique_ptr<NativeFolder, CloseFolder>;

public:
    // Opens (and creates) the native folder; Valid() tells whether it worked.
    explicit Destination(const std::string& nativeFolder);
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    bool Valid() const { return m_Root != nullptr; }
    const std::string& Folder() const { return m_Folder; }

    enum class Status { Ok, Refused, Failed };
    // The folder of `components` (all of them), made where missing.
    Status MakeFolders(const std::vector<std::string>& components, std::size_t count);
    // What is at the member's place: -1 nothing, 0 a file, 1 anything else;
    // *modified is its time.
    int Existing(const std::vector<std::string>& components, std::time_t* modified);

    // A file being written; Commit() puts it in place, else it is removed.
    class File {
    public:
        File() = default;
        ~File();
        File(File&& other) noexcept;
        File& operator=(File&&) = delete;
        File(const File&) = delete;
        bool Write(const char* data, std::size_t size);
        bool Commit(std::time_t modified, unsigned mode);

    private:
        friend class Destination;
        FolderPtr m_Folder;
        std::intptr_t m_Handle = -1;  // a descriptor, or a Windows handle
        std::string m_Temporary;
        std::string m_Name;
    };
    Status Create(const std::vector<std::string>& components, File& file);

private:
    // The folder of the first `count` components, or null; *status says why
    // not.
    FolderPtr OpenFolder(const std::vector<std::string>& components, std::size_t count, bool make,
                         Status* status);
    // What `name` in `folder` is, as Existing() answers.
    static int Kind(const NativeFolder& folder, const std::string& name, std::time_t* modified);
    // A new file `name` in `folder` open to write, or -1 (*exists when the
    // name was taken).
    static std::intptr_t CreateNew(const NativeFolder& folder, const std::string& name,
                                   bool* exists);

    FolderPtr m_Root;
    std::string m_Folder;
};

}  // namespace nvk::unzip
