// The backend's own reads of the environment. setenv and unsetenv may move
// the environment while another thread walks it, so every read in the
// backend goes through the lock that SetEnvironmentVariableA changes it under.
#pragma once

#include <string>

namespace nvk::os::posix {

// The value of `name`, spelled exactly as given (as getenv finds it), copied
// under the environment's lock; empty when it is not set.
std::string EnvironmentValue(const char* name);

}  // namespace nvk::os::posix
