// System errors, reported on standard error.

#pragma once

namespace zelta {

// perror(3) for the errno of now, after the lines that standard output still holds: where both go
// to one place, they arrive in the order in which they came about.
void report_error(const char *text);

} // namespace zelta
