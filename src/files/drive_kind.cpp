#include "files/drive_kind.h"

namespace nvk::files {

using namespace nvk::os;

bool DriveOfKind(const Chaine& kind, UINT driveType) {
    switch (driveType) {
        case DRIVE_UNKNOWN:
        case DRIVE_NO_ROOT_DIR:
            return false;
        case DRIVE_REMOVABLE:
        case DRIVE_CDROM:
        case DRIVE_RAMDISK:
            return kind != "<HardDrives>";
        case DRIVE_REMOTE:
            return kind != "<HardDrives>" && kind != "<LocalDrives>";
        default:
            return true;
    }
}

}  // namespace nvk::files
