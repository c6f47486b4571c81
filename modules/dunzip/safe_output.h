// Writing members below a destination folder without leaving it: names are
// checked before anything is made, folders are walked one at a time without
// following links, and each file is written under a temporary name and put
// in place only when it is whole.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace nvk::unzip {

// The folders of a member's name, or an empty list when the name is not safe
// to extract: absolute, with a drive, with a ".." component, or naming
// nothing. Backslashes separate folders too; "." components are dropped.
std::vector<std::string> SafeComponents(const std::string& name);

class Destination {
public:
    // Opens (and creates) the native folder; Valid() tells whether it worked.
    explicit Destination(const std::string& nativeFolder);
    ~Destination();
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    bool Valid() const { return m_Fd >= 0; }
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
        bool Open() const { return m_Fd >= 0; }

    private:
        friend class Destination;
        int m_Folder = -1;
        int m_Fd = -1;
        std::string m_Temporary;
        std::string m_Name;
    };
    Status Create(const std::vector<std::string>& components, File& file);

private:
    // An open folder of the walk, or -1; *status says why not.
    int OpenFolder(const std::vector<std::string>& components, std::size_t count, bool make,
                   Status* status);

    int m_Fd = -1;
    std::string m_Folder;
};

}  // namespace nvk::unzip
