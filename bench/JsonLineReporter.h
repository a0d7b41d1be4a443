#pragma once

#include <benchmark/benchmark.h>

#include <iostream>

/// Prints one JSON object per line for every benchmark run, so figures can be collected and compared across commits:
/// {"name": ..., "iterations": ..., "real_ns": ..., "cpu_ns": ..., <counters>}
class JsonLineReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const&) override { return true; }

    void ReportRuns(std::vector<Run> const& runs) override {
        for (auto const& run : runs) {
            std::cout << "{\"name\": \"" << run.benchmark_name() << "\", \"iterations\": " << run.iterations
                      << ", \"real_ns\": " << run.GetAdjustedRealTime() << ", \"cpu_ns\": " << run.GetAdjustedCPUTime();
            for (auto const& [name, counter] : run.counters)
                std::cout << ", \"" << name << "\": " << counter.value;
            std::cout << "}" << std::endl;
        }
    }
};

/// Runs the benchmarks of the executable, reporting JSON lines; for its main().
inline void RunBenchmarks(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    JsonLineReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
}
