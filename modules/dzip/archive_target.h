// The archive as libzip reads and rewrites it. The library would write its
// new archive beside the old one; this source writes it in the caller's
// temporary folder (pathForTempFlag and lpszTempPath) and moves it into
// place once it is whole, so that a failed run leaves the old archive as it
// was.
#pragma once

#include <zip.h>

#include <string>

#include "job.h"

namespace zipengine {

// `tempFolder` is a Windows folder; empty means the archive's own folder.
zip_source_t* ArchiveTarget(Job& job, std::string const& archive, std::string const& tempFolder,
                            zip_error_t* error);

}  // namespace zipengine
