// The table that the benchmarks print. Each row does one thing in two ways, ours and theirs, in
// alternating rounds of one run, so that whatever slows the machine down slows both: the ratio of
// the medians stands still where times do not.

#pragma once

#include <cstddef>
#include <ctime>
#include <functional>
#include <string>

namespace zelta::bench {

struct row {
    std::string name;
    double target = 0; // the largest ratio aimed at; 0 for none
    // One round each, and what it measured: nanoseconds for one operation, unless the name says
    // else.
    std::function<double()> ours, theirs;
};

void add(const row &each);

// Runs the rows and prints the table; standard output is closed to everything else. The arguments
// are Google Benchmark's, such as --benchmark_filter=sort.
int run(int argc, char **argv);

// The nanoseconds of processor time that one of count operations takes.
template <typename Work>
double time_each(size_t count, Work work) {
    timespec start, end;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
    work();
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
    return (1e9 * static_cast<double>(end.tv_sec - start.tv_sec) +
            static_cast<double>(end.tv_nsec - start.tv_nsec)) /
           static_cast<double>(count);
}

} // namespace zelta::bench
