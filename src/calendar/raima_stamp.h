// Time stamps of the Raima database engine: seconds counted in a fixed zone
// five hours west of Greenwich, with that engine's own daylight rule.
#pragma once

#include <cstdint>

namespace nvk {

// The Julian day number of the stamp's date, or 0.
std::uint32_t RaimaStampDay(std::int32_t stamp);

// The engine's daylight test, whatever the machine's zone: `yearsSince1970`
// from 1970, `yearDay` from 0.
bool RaimaDaylight(int hourOfDay, int yearDay, int yearsSince1970);

}  // namespace nvk
