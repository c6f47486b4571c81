#include "paths/path_stores.h"

namespace nvk::paths {

namespace {

// A full path begins with "\\" or has ":\" as its second and third
// characters; anything else is read against the application folder.
bool IsFullPath(const Chaine& path) {
    if (path.Length() < 2) {
        return false;
    }
    const char* text = path.c_str();
    return (text[0] == '\\' && text[1] == '\\') || (text[1] == ':' && text[2] == '\\');
}

}  // namespace

Chaine Normalise(const Chaine& value, SpecialNVKPath::NotExistAction action) {
    Chaine path = Stripped(value);
    if (path.FindChar('%') != -1) {
        path = Stripped(path.ExpandEnv());
    }
    if (!path.IsEmpty() && !IsFullPath(path)) {
        path = PathJoin(SpecialNVKPath::GetAppFolder(), path);
    }
    if (path.IsEmpty() || path.IsRootPath() || path.IsFolder()) {
        return path;
    }
    if (action == SpecialNVKPath::CreateIfMissing && MakeDirectoryPath(path, nullptr) == 1) {
        return path;
    }
    return Chaine();
}

Chaine SpecialFolder(int csidl) {
    Chaine folder;
    return folder.GetSpecialFolder(csidl);
}

}  // namespace nvk::paths
