#include "engine/FPSCounter.h"

#include <algorithm>

namespace quorl {

namespace {
double Seconds(FPSCounter::Clock::duration d) {
    return std::chrono::duration<double>(d).count();
}
}

FPSCounter::BusyScope::~BusyScope() {
    _counter.AddBusyTime(now() - _start);
}

FPSCounter::FPSCounter(double period) : _period(period) {}

double FPSCounter::Tick() {
    auto const now = FPSCounter::now();
    if (!_started) {
        _started = true;
        _lastTick = _windowStart = now;
        return 0.0;
    }
    double dt = Seconds(now - _lastTick);
    _lastTick = now;
    _frameTime.store(dt, std::memory_order_relaxed);
    ++_windowTicks;

    double window = Seconds(now - _windowStart);
    if (window >= _period) {
        _ticksPerSecond.store(_windowTicks / window, std::memory_order_relaxed);
        _load.store(std::min(1.0, Seconds(_windowBusy) / window), std::memory_order_relaxed);
        _windowStart = now;
        _windowBusy = {};
        _windowTicks = 0;
    }
    return dt;
}

}
