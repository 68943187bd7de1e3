// Terminates running programs by name.

#pragma once

namespace zelta {

// Sends the interrupt signal to every process whose line in the listing of ps(1) contains the name
// anywhere, arguments and other columns included, but never to the tool itself. A line without a
// usable process id is passed over; one of more than 256 characters, its end included, ends the
// listing, as a read error does. Does not wait for the processes to end. exit_ok, whatever was
// found: a ps that cannot be executed lists nothing; exit_failed when no child could be made for
// it. A signal that cannot be sent prints its line.
int kill_proc(const char *name);

} // namespace zelta
