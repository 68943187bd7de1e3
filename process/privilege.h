// The one place that changes the user and group id.

#pragma once

#include <sys/types.h>

namespace zelta {

// Takes the identity of root, real ids included, for the programs that are run from here on.
void become_root();

// Changes the effective user id, which decides, with the group id, about access to files
// (credentials(7)): to the real user id for a file that the caller chose, and back. True when it is
// this user's now; errno says why not.
bool set_effective_user(uid_t user);

} // namespace zelta
