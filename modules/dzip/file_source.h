// A file to compress, read through the OS layer as libzip asks for it. The
// entry's time comes from this source's stat: setting it on the entry
// afterwards (zip_file_set_mtime, zip_file_set_dostime) makes the library
// write an encrypted entry that no reader can open.
#pragma once

#include <zip.h>

#include <cstdint>
#include <ctime>
#include <string>

#include "job.h"

namespace zipengine {

// `dosDate` and `dosTime` become the entry's time; `number` and `count`
// place the file in the run for the progress texts.
zip_source_t* FileSource(zip_t* archive, Job& job, std::string const& path, std::uint32_t dosDate,
                         std::uint32_t dosTime, int number, int count);

// The local time of a zip date and time, as the library converts it back.
std::time_t TimeOfDos(std::uint32_t dosDate, std::uint32_t dosTime);

}  // namespace zipengine
