// The few POSIX calls that the tests' own set-up uses (environment and
// scratch folders), given to the Windows build of the tests through the C
// runtime. Included ahead of every test source by the Windows build only.
#pragma once

#include <direct.h>
#include <io.h>

#include <cstdlib>
#include <string>

inline int setenv(const char* name, const char* value, int overwrite) {
    if (overwrite == 0 && std::getenv(name) != nullptr) {
        return 0;
    }
    return _putenv((std::string(name) + "=" + value).c_str());
}

inline int unsetenv(const char* name) {
    return _putenv((std::string(name) + "=").c_str());
}

inline char* mkdtemp(char* pattern) {
    return _mktemp(pattern) != nullptr && _mkdir(pattern) == 0 ? pattern : nullptr;
}
