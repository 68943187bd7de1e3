// The one place that changes the user and group id.

#pragma once

namespace zelta {

// Takes the identity of root, real ids included, for the programs that are run from here on.
void become_root();

} // namespace zelta
