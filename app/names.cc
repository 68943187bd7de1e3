#include "app/names.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include <unistd.h>

#include "lib/exit_status.h"
#include "process/privilege.h"

namespace zelta {

namespace {

constexpr size_t longest_name = 255; // the kernel's own limit is lower; it judges for itself

bool refused(const char *name) {
    for (const char *c = name; *c != '\0'; c++)
        if (isalnum(static_cast<unsigned char>(*c)) == 0 && *c != '-' && *c != '.')
            return true;
    return strlen(name) > longest_name;
}

int show(const char *name) {
    puts(name);
    return exit_ok;
}

} // namespace

int hostname(int argc, char *argv[]) {
    if (argc == 3) {
        if (refused(argv[2]))
            return exit_invalid;
        become_root();
        return sethostname(argv[2], strlen(argv[2])) == 0 ? exit_ok : exit_invalid;
    }
    char name[longest_name + 1] = {};
    return gethostname(name, longest_name) == 0 ? show(name) : exit_failed;
}

int domainname(int argc, char *argv[]) {
    if (argc == 3) {
        if (refused(argv[2]))
            return exit_invalid;
        become_root();
        return setdomainname(argv[2], strlen(argv[2])) == 0 ? exit_ok : exit_invalid;
    }
    char name[longest_name + 1] = {};
    return getdomainname(name, longest_name) == 0 ? show(name) : exit_failed;
}

} // namespace zelta
