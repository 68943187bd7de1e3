// The device's network init script, run again when a link has gone.

#pragma once

namespace zelta {

// Mounts /etc/ with "exec", runs the script in it, and mounts it with "noexec" again, whatever each
// step returned. The result of the last step as zelta_system gives it.
int zelta_net_init();

} // namespace zelta
