#pragma once

#include "engine/Export.h"

#include <atomic>
#include <chrono>

namespace quorl {

/// Rate and load of one loop. The loop's own thread calls Tick once per pass and wraps its work in Busy; any thread
/// may read the published figures, which are refreshed once per reporting period.
class QUORL_EXPORT FPSCounter {
public:
    using Clock = std::chrono::steady_clock;
    /// The time source of every counter; tests step a clock of their own.
    static inline Clock::time_point (*now)() = Clock::now;

    /// Counts the time from construction to destruction as busy time of the loop.
    class QUORL_EXPORT BusyScope {
    public:
        explicit BusyScope(FPSCounter& counter) : _counter(counter), _start(now()) {}
        ~BusyScope();
        BusyScope(BusyScope const&) = delete;
        BusyScope& operator=(BusyScope const&) = delete;

    private:
        FPSCounter& _counter;
        Clock::time_point _start;
    };

    /// period: seconds over which ticks and busy time are averaged before the figures are published.
    explicit FPSCounter(double period);

    /// Marks the start of a loop pass. Returns the seconds since the previous Tick, 0 on the first.
    double Tick();
    [[nodiscard]] BusyScope Busy() { return BusyScope(*this); }

    double Period() const { return _period; }
    /// Passes per second over the last full period; 0 until one has passed.
    double TicksPerSecond() const { return _ticksPerSecond.load(std::memory_order_relaxed); }
    /// Busy share of wall time over the last full period, 0 to 1; 1.0 until one has passed.
    double Load() const { return _load.load(std::memory_order_relaxed); }
    /// Seconds between the last two ticks.
    double FrameTime() const { return _frameTime.load(std::memory_order_relaxed); }

private:
    void AddBusyTime(Clock::duration busy) { _windowBusy += busy; }

    double const _period;
    std::atomic<double> _ticksPerSecond{0.0};
    std::atomic<double> _load{1.0};
    std::atomic<double> _frameTime{0.0};

    bool _started = false;
    Clock::time_point _lastTick;
    Clock::time_point _windowStart;
    Clock::duration _windowBusy{};
    unsigned _windowTicks = 0;
};

}
