#include "os/posix/module_names.h"

#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

namespace nvk::os::posix {

std::vector<std::string> ModuleFileNames(std::string_view baseName) {
    std::string name(baseName);
    if (name.ends_with('.')) {
        name.pop_back();
        return {name};
    }
    if (name.find('.') == std::string::npos) {
        name += ".dll";
    }
    std::vector<std::string> names = {name};
    constexpr std::string_view kDll = ".dll";
    if (name.size() > kDll.size() &&
        std::equal(kDll.begin(), kDll.end(), name.end() - kDll.size(), [](char a, char b) {
            return a == std::tolower(static_cast<unsigned char>(b));
        })) {
        std::string stem = name.substr(0, name.size() - kDll.size());
        names.push_back("lib" + stem + ".so");
        std::transform(stem.begin(), stem.end(), stem.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if ("lib" + stem + ".so" != names.back()) {
            names.push_back("lib" + stem + ".so");
        }
    }
    return names;
}

std::string ExecutablePath() {
    std::string buffer(PATH_MAX, '\0');
    for (;;) {
        ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (length < 0) {
            return {};
        }
        if (static_cast<std::size_t>(length) < buffer.size()) {
            buffer.resize(static_cast<std::size_t>(length));
            return buffer;
        }
        buffer.resize(buffer.size() * 2);
    }
}

std::string LayerPath() {
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(&LayerPath), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    char* resolved = realpath(info.dli_fname, nullptr);
    if (resolved == nullptr) {
        return info.dli_fname;
    }
    std::string path(resolved);
    free(resolved);
    return path;
}

}  // namespace nvk::os::posix
