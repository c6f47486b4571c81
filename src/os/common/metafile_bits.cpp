// The check of enhanced-metafile records handed in as bytes.
#include "os/common/metafile_bits.h"

#include <cstring>

namespace nvk::os {

bool EnhMetaFileBitsValid(UINT size, const BYTE* data) {
    if (data == nullptr || size < sizeof(ENHMETAHEADER)) {
        return false;
    }
    ENHMETAHEADER header;
    std::memcpy(&header, data, sizeof header);
    if (header.iType != EMR_HEADER || header.dSignature != ENHMETA_SIGNATURE ||
        header.nBytes != size || header.nSize < 88) {
        return false;
    }
    EMR record{};
    for (UINT at = 0; at < size; at += record.nSize) {
        if (size - at < sizeof record) {
            return false;
        }
        std::memcpy(&record, data + at, sizeof record);
        if (record.nSize < sizeof record || record.nSize % 4 != 0 || record.nSize > size - at) {
            return false;
        }
        if (record.iType == EMR_EOF) {
            return at + record.nSize == size;
        }
    }
    return false;
}

}  // namespace nvk::os
