#include "app/names.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <unistd.h>

#include "app/exit_status.h"
#include "process/privilege.h"

namespace zelta {

namespace {

constexpr size_t longest_name = 255; // the kernel's own limit is lower; it judges for itself

bool acceptable(std::string_view name) {
    if (name.size() > longest_name)
        return false;
    for (char c : name)
        if (isalnum(static_cast<unsigned char>(c)) == 0 && c != '-' && c != '.')
            return false;
    return true;
}

// Raises privileges for a name that is acceptable; false for any other.
bool prepare_to_set(const char *name) {
    if (!acceptable(name))
        return false;
    become_root();
    return true;
}

int show(const char *name) {
    puts(name);
    return exit_ok;
}

} // namespace

int hostname(int argc, char *argv[]) {
    if (argc == 3)
        return prepare_to_set(argv[2]) && sethostname(argv[2], strlen(argv[2])) == 0 ? exit_ok
                                                                                     : exit_invalid;
    char name[longest_name + 1] = {};
    return gethostname(name, longest_name) == 0 ? show(name) : exit_failed;
}

int domainname(int argc, char *argv[]) {
    if (argc == 3)
        return prepare_to_set(argv[2]) && setdomainname(argv[2], strlen(argv[2])) == 0
                   ? exit_ok
                   : exit_invalid;
    char name[longest_name + 1] = {};
    return getdomainname(name, longest_name) == 0 ? show(name) : exit_failed;
}

} // namespace zelta
