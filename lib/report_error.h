// System errors, reported on standard error.

#pragma once

namespace zelta {

// perror(3) with the current errno, after a flush of standard output: where both streams go to one
// place, their lines keep the order in which they were printed.
void report_error(const char *text);

} // namespace zelta
