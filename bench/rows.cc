#include "bench/rows.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include <benchmark/benchmark.h>
#include <unistd.h>

namespace zelta::bench {

namespace {

constexpr int rounds = 31;

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The first of two is slower after the other's data, so they take turns at that as well.
void alternate(benchmark::State &state, const row &each) {
    std::vector<double> ours, theirs;
    for ([[maybe_unused]] auto _ : state) {
        const bool first = ours.size() % 2 == 0;
        if (first)
            ours.push_back(each.ours());
        theirs.push_back(each.theirs());
        if (!first)
            ours.push_back(each.ours());
    }
    state.counters["ours"] = median(ours);
    state.counters["theirs"] = median(theirs);
    state.counters["target"] = each.target;
}

// scripts/bench prints the heading, command.sh rows of the same form.
class table : public benchmark::BenchmarkReporter {
public:
    explicit table(FILE *to) : out(to) {
    }
    bool ReportContext(const Context &) override {
        return true;
    }
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &each : runs) {
            const double ours = each.counters.at("ours"), theirs = each.counters.at("theirs");
            const double ratio = ours / theirs, target = each.counters.at("target");
            fprintf(out, "%-48s %12.1f %12.1f %7.2f", each.run_name.function_name.c_str(), ours,
                    theirs, ratio);
            if (target > 0)
                fprintf(out, " %7.2f%s", target, ratio < target + 0.005 ? "" : "  missed");
            fputc('\n', out);
            fflush(out);
        }
    }

private:
    FILE *out;
};

} // namespace

void add(const row &each) {
    benchmark::RegisterBenchmark(each.name.c_str(), alternate, each)->Iterations(rounds);
}

int run(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    FILE *out = fdopen(dup(STDOUT_FILENO), "w");
    if (out == nullptr || freopen("/dev/null", "w", stdout) == nullptr) {
        perror("standard output");
        return 1;
    }
    table reporter(out);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    fclose(out);
    return 0;
}

} // namespace zelta::bench
