// The host name and the domain name of the kernel: shown without a parameter, set with one.

#pragma once

namespace zelta {

// Command handlers; argv[2], if there, is the new name: at most 255 bytes, letters, digits, "-" and
// "." alone. exit_ok; exit_invalid for a name that is refused or cannot be set; exit_failed when
// the name cannot be read. No failure prints a message.
int hostname(int argc, char *argv[]);
int domainname(int argc, char *argv[]);

} // namespace zelta
