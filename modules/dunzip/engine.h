// The unzip engine: runs one command record over an archive.
#pragma once

#include "archive_input.h"
#include "nvk/archive/unzip_cmd.h"

namespace nvk::unzip {

// Runs `command` over the archive of `input`; returns a code of
// nvk/archive/unzip_engine.h.
int Run(UNZIPCMDSTRUCT& command, ArchiveInput& input);

// The path of the archive, in the library's path syntax, as a native path.
std::string NativePath(const char* path);

}  // namespace nvk::unzip
