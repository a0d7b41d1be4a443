#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

/// What the two pile benches share around their engines: the command line, the timing of each tick and the one JSON
/// line of a run: {"engine": ..., "n": ..., "ticks": ..., "mean_ms": ..., "last300_ms": ..., "max_ms": ...,
/// "peak_rss_mb": ..., "asleep": ...}, and "state" where the engine gives a digest of its final state, so that two
/// commits can tell whether they still simulate the same.
namespace pile {

struct Options {
    size_t n = 1000;
    int ticks = 600;
};

/// Reads "--n N" and "--ticks T"; prints the usage and gives nothing for anything else.
inline std::optional<Options> ParseOptions(int argc, char** argv) {
    Options options;
    auto number = [](char const* text, auto& value) {
        auto end = text + std::strlen(text);
        auto [rest, error] = std::from_chars(text, end, value);
        return error == std::errc() && rest == end;
    };
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        bool read = false;
        if (argument == "--n" && i + 1 < argc)
            read = number(argv[++i], options.n);
        else if (argument == "--ticks" && i + 1 < argc)
            read = number(argv[++i], options.ticks);
        if (!read) {
            std::cerr << "usage: " << argv[0] << " [--n N] [--ticks T]   (1000 cubes, 600 ticks when not given)"
                      << std::endl;
            return std::nullopt;
        }
    }
    if (options.ticks < 1) {
        std::cerr << "--ticks must be at least 1" << std::endl;
        return std::nullopt;
    }
    return options;
}

/// Milliseconds of each of `ticks` calls of `tick`.
template <class Tick>
std::vector<double> TimeTicks(int ticks, Tick&& tick) {
    std::vector<double> milliseconds;
    milliseconds.reserve(static_cast<size_t>(ticks));
    for (int i = 0; i < ticks; ++i) {
        auto start = std::chrono::steady_clock::now();
        tick();
        milliseconds.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    return milliseconds;
}

/// The run's line. The last 300 ticks tell the cost of a settled pile, the mean that of the whole collapse.
inline void PrintResult(char const* engine, Options const& options, std::vector<double> const& milliseconds,
                        size_t asleep, std::optional<uint64_t> state = std::nullopt) {
    constexpr size_t kTail = 300;
    auto tail = milliseconds.end() - static_cast<std::ptrdiff_t>(std::min(kTail, milliseconds.size()));
    double mean = std::accumulate(milliseconds.begin(), milliseconds.end(), 0.0) / double(milliseconds.size());
    double tailMean = std::accumulate(tail, milliseconds.end(), 0.0) / double(milliseconds.end() - tail);
    double max = *std::max_element(milliseconds.begin(), milliseconds.end());

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    double peakMegabytes = static_cast<double>(usage.ru_maxrss) / 1024.0;

    std::cout << "{\"engine\": \"" << engine << "\", \"n\": " << options.n << ", \"ticks\": " << options.ticks
              << ", \"mean_ms\": " << mean << ", \"last300_ms\": " << tailMean << ", \"max_ms\": " << max
              << ", \"peak_rss_mb\": " << peakMegabytes << ", \"asleep\": " << asleep;
    if (state)
        std::cout << ", \"state\": \"" << std::hex << *state << std::dec << "\"";
    std::cout << "}" << std::endl;
}

/// The whole of a pile benchmark's main(): options, one run, and errors reported rather than thrown.
template <class Run>
int Main(int argc, char** argv, Run&& run) {
    auto options = ParseOptions(argc, argv);
    if (!options)
        return 2;
    try {
        return run(*options);
    } catch (std::exception const& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}

}
