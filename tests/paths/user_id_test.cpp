// The user's SID on the POSIX build, which ends in the user's id.
#include <unistd.h>

#include "paths/paths_support.h"

namespace nvk::test {
namespace {

TEST(Account, TheUsersSidEndsInTheUid) {
    const std::string sid = UserSid();
    EXPECT_TRUE(sid.ends_with("-" + std::to_string(geteuid()))) << sid;
}

}  // namespace
}  // namespace nvk::test
