// Drives the whole resolution of the well-known folders with any bytes as
// Paths.ini: every identifier, own keys with rules (one pair naming each
// other), the database servers of what was found and the legacy folders that
// read no registry. Nothing is made on the disk: every look-up is
// EmptyIfMissing, and DBServer(ID), which makes its folder, is left out.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "nvk/core/chaine.h"
#include "nvk/paths/special_nvk_path.h"
#include "os/api/path_map.h"
#include "os/api/sync.h"

namespace {

namespace fs = std::filesystem;
using namespace SpecialNVKPath;

struct ScratchFolder {
    fs::path path;
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
};

// An application folder of this process's own, with the rules set once.
const fs::path& AppFolder() {
    static const ScratchFolder folder{[] {
        fs::path made = fs::temp_directory_path() /
                        ("nvk_fuzz_paths_" + std::to_string(nvk::os::GetCurrentProcessId()));
        fs::create_directories(made);
        SetAppFolder(nvk::os::ToWindowsPath(made.string().c_str()).c_str());
        SetRule("Own", Share, "own");
        SetRule("Below", "Own", "below");
        SetRule("Ping", "Pong", "a");
        SetRule("Pong", "Ping", "b");
        SetRule("Share", Common, "loop");
        return made;
    }()};
    return folder.path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fs::path ini = AppFolder() / "Paths.ini";
    std::ofstream(ini, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const PTableau<ID>& ids = AllIDs();
    for (int i = 0; i < ids.Size(); ++i) {
        DBServerForPath(Get(ids[i], EmptyIfMissing));
    }
    for (const char* key : {"Own", "Below", "Ping", "Paths", "DBServers", ""}) {
        Get(Chaine(key), EmptyIfMissing);
    }
    Get(LegacyDossiersRoot);
    Get(LegacyDossiersDocuments);
    return 0;
}
