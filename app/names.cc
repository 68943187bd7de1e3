#include "app/names.h"

#include <cctype>
#include <cstdio>
#include <string_view>

#include <unistd.h>

#include "app/exit_status.h"
#include "process/privilege.h"

namespace zelta {

namespace {

constexpr size_t longest_name = 255; // the kernel's own limit is lower; it judges for itself

struct kernel_name {
    int (*get)(char *name, size_t size);
    int (*set)(const char *name, size_t length);
};

constexpr kernel_name host_name = {.get = gethostname, .set = sethostname};
constexpr kernel_name domain_name = {.get = getdomainname, .set = setdomainname};

bool acceptable(std::string_view name) {
    if (name.size() > longest_name)
        return false;
    for (char c : name)
        if (isalnum(static_cast<unsigned char>(c)) == 0 && c != '-' && c != '.')
            return false;
    return true;
}

int set_name(const kernel_name &which, std::string_view name) {
    if (!acceptable(name))
        return exit_invalid;
    become_root();
    return which.set(name.data(), name.size()) == 0 ? exit_ok : exit_invalid;
}

int show_name(const kernel_name &which) {
    char name[longest_name + 1] = {};
    if (which.get(name, longest_name) != 0)
        return exit_failed;
    puts(name);
    return exit_ok;
}

int name_command(const kernel_name &which, int argc, char *argv[]) {
    return argc == 3 ? set_name(which, argv[2]) : show_name(which);
}

} // namespace

int hostname(int argc, char *argv[]) {
    return name_command(host_name, argc, argv);
}

int domainname(int argc, char *argv[]) {
    return name_command(domain_name, argc, argv);
}

} // namespace zelta
