// Page-granular memory, reserved and committed as VirtualAlloc does it.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// MEM_RESERVE reserves address space, MEM_COMMIT backs it with zeroed pages;
// MEM_TOP_DOWN is accepted and ignored. Regions are whole pages.
LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD allocationType, DWORD protect);
// MEM_RELEASE takes the base of a region and size 0; MEM_DECOMMIT gives back
// pages of a committed range and keeps the reservation.
BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD freeType);

}  // namespace nvk::os
