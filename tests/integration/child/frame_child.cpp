// A process of its own for the frame's start-up and module tear-down, which a
// test can only watch from outside: a hang is ended by the test's time-out, a
// death before main by the exit status.
//   frame_child start          makes and joins a few values, then ends
//   frame_child unload-worker  a worker loads module a, unloads it and ends;
//                              the main thread then loads module b
//   frame_child unload-main    the main thread loads and unloads module a; a
//                              worker then loads module b
#include <cstring>
#include <thread>

#include "../module.h"
#include "nvk/core/chaine.h"
#include "os/api/module.h"

namespace {

using namespace nvk::os;

// Loads a module, makes and frees a value in it, and unloads it.
bool UseModule(const char* path) {
    HMODULE module = LoadLibraryA(path);
    if (module == nullptr) {
        return false;
    }
    auto make = reinterpret_cast<MakeTextFn>(GetProcAddress(module, "MakeText"));
    auto free = reinterpret_cast<FreeTextFn>(GetProcAddress(module, "FreeText"));
    const char* text = make("value");
    const bool made = std::strncmp(text, "value (made in ", 15) == 0;
    free(text);
    return FreeLibrary(module) != FALSE && made;
}

int Start() {
    Chaine value("start");
    value += " of a process";
    return value == "start of a process" ? 0 : 1;
}

int UnloadThenLoad(bool unloadOnWorker) {
    bool first = false;
    bool second = false;
    if (unloadOnWorker) {
        std::thread([&] { first = UseModule(NVK_TEST_MODULE_A); }).join();
        second = UseModule(NVK_TEST_MODULE_B);
    } else {
        first = UseModule(NVK_TEST_MODULE_A);
        std::thread([&] { second = UseModule(NVK_TEST_MODULE_B); }).join();
    }
    return first && second ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const char* mode = argc > 1 ? argv[1] : "";
    if (std::strcmp(mode, "start") == 0) {
        return Start();
    }
    if (std::strcmp(mode, "unload-worker") == 0 || std::strcmp(mode, "unload-main") == 0) {
        return UnloadThenLoad(std::strcmp(mode, "unload-worker") == 0);
    }
    return 2;
}
