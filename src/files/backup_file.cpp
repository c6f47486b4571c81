// BackupFile: the rotation of numbered copies.
#include "nvk/files/file_operations.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/file_copy.h"

namespace os = nvk::os;

namespace {

Chaine Numbered(const Chaine& base, unsigned int i) {
    Chaine name;
    name.Format("%s.%u.bak", base.c_str(), i);
    return name;
}

bool Exists(const Chaine& path) {
    return os::GetFileAttributesA(path) != os::INVALID_FILE_ATTRIBUTES;
}

}  // namespace

int BackupFile(const char* file, unsigned long flags, unsigned int count) {
    if (file == nullptr || !Exists(file) || count == 0) {
        return 1;
    }
    const Chaine path(file);
    Chaine folder = path.GetFolder();
    if ((flags & 1) != 0) {
        folder = PathJoin(folder, "Backups");
        MakeDirectoryPath(folder, nullptr);
    }
    const Chaine base = PathJoin(folder, path.GetFileName());
    unsigned int target = 0;
    while (target < count && Exists(Numbered(base, target))) {
        ++target;
    }
    if (target == count) {
        if (!os::DeleteFileA(Numbered(base, 0))) {
            return 0;
        }
        for (unsigned int i = 1; i < count; ++i) {
            if (!os::MoveFileA(Numbered(base, i), Numbered(base, i - 1))) {
                return 0;
            }
        }
        target = count - 1;
    }
    return os::CopyFileA(file, Numbered(base, target), os::TRUE);
}
