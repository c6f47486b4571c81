// Whether a file has a section open, as every process sees it. Each section
// of a file holds a shared byte-range lock on one marker position, past the
// share markers, through an open file description of its own; the kernel
// drops it with the section's last descriptor, however the process ends.
#pragma once

namespace nvk::os::posix {

// Takes the marker on `fd`, a readable open description that belongs to the
// section alone.
void HoldSectionMarker(int fd);

// Whether a section made through another open description of the file of
// `fd` is open: its views or its handle.
bool SectionOpen(int fd);

}  // namespace nvk::os::posix
