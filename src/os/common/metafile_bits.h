// The check of enhanced-metafile records handed in as bytes, shared by the
// backends: Windows' own takes bits that its header overstates.
#pragma once

#include "nvk/os/gdi_types.h"

namespace nvk::os {

// Whether `data` is a whole metafile: its header, as many bytes as the
// header counts, records of 4-byte multiples within them, EMR_EOF last.
bool EnhMetaFileBitsValid(UINT size, const BYTE* data);

}  // namespace nvk::os
