// A module that says which file it was loaded from and counts its loads.
extern "C" {

__attribute__((visibility("default"))) const char* TestModuleFile() {
    return NVK_TEST_MODULE_FILE;
}

__attribute__((visibility("default"))) int TestModuleCounter() {
    static int calls = 0;
    return ++calls;
}
}
