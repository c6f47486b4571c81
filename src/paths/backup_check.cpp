#include "paths/backup_check.h"

#include "os/api/file.h"

namespace nvk::paths {

bool CanWriteIn(const Chaine& folder) {
    const Chaine probe = PathJoin(folder, "###_TESTSAUVEGARDNVK_###.zip");
    // The file holds its own path, so that a share that silently cuts
    // writes short is caught too.
    const bool written = probe.WriteToFile(probe);
    const bool deleted = os::DeleteFileA(probe) != 0;
    return written && deleted;
}

}  // namespace nvk::paths
