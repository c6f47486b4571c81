#include "module.h"

#include <cstring>
#include <new>

#include "nvk/core/block_storage.h"
#include "nvk/core/chaine.h"
#include "nvk/core/process_singleton.h"
#include "os/api/sync.h"

namespace {

// The object knows which module made it, so the test can tell.
struct SharedKind {
    using Object = int;
    static constexpr const char* Key = "Test.Shared";
    static Object* Make() { return new int(NVK_TEST_MODULE_NAME[0]); }
    static void Destroy(Object* object) { delete object; }
};

// The text of a value with one reference of its own, to travel as a word.
const char* Detach(const Chaine& value) {
    nvk::os::InterlockedIncrement(&value.Buffer()->RefCount);
    return value.c_str();
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const char* MakeText(const char* text) {
    Chaine value(text);
    value += " (made in " NVK_TEST_MODULE_NAME ")";
    return Detach(value);
}

extern "C" __attribute__((visibility("default"))) const char* MakeEmpty() {
    return Detach(Chaine());
}

extern "C" __attribute__((visibility("default"))) void FreeText(const char* text) {
    alignas(Chaine) unsigned char storage[sizeof(Chaine)];
    std::memcpy(storage, &text, sizeof text);
    std::launder(reinterpret_cast<Chaine*>(storage))->~Chaine();
}

extern "C" __attribute__((visibility("default"))) int* SharedObject() {
    return nvk::ProcessSingleton<SharedKind>::Get();
}

extern "C" __attribute__((visibility("default"))) void* Storage() {
    return BlockStorage();
}
