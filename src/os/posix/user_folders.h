// The user's own places on a machine that several users share: the home
// folder, and folders that only the user may enter.
#pragma once

#include <string>

namespace nvk::os::posix {

// HOME when it is an absolute path, else the home folder of the effective
// user in the account database (services often run without HOME); empty
// when neither gives one.
std::string HomeFolder();

// What others may do in a folder of the user's.
enum class Others { MayRead, NoAccess };

// Makes `path` (native, absolute) with its missing parents, the last with mode
// 0700, and checks that it is a folder, not a link, owned by the effective
// user, that group and others cannot write to it, and with NoAccess, not enter
// it at all. False, with the Win32 error set, when it is not: nothing another
// user made or can change is ever taken as ours.
bool PrivateFolder(const std::string& path, Others others);

}  // namespace nvk::os::posix
