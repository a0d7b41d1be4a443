#include "game/input/HoldTimer.h"

#include <chrono>

namespace game::input {

namespace {
// A press shorter than this many polls counts as a tap, whatever the clock says: a slow pass must not turn it into a
// hold.
constexpr int kTapPolls = 3;

double SystemClockMs() {
    auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(sinceEpoch).count();
}
}

double (*HoldTimer::clock)() = SystemClockMs;

bool HoldTimer::Poll(bool pressed, bool released, bool held, double holdMs, double tapMs) {
    double elapsedMs = 0.0;
    if (pressed) {
        Start();
        _counter = 0;
        return false;
    }
    if (released) {
        if (tapMs == 0.0) {
            Stop();
            return false;
        }
        if (RunningFor(elapsedMs) && _counter >= kTapPolls && elapsedMs > tapMs) {
            Stop();
            return false;
        }
        Stop();
        _counter = 0;
        return true;
    }
    if (held) {
        if (holdMs == 0.0) {
            ++_counter;
            return false;
        }
        if (RunningFor(elapsedMs) && _counter >= kTapPolls && elapsedMs >= holdMs) {
            Stop();
            return true;
        }
        ++_counter;
        return false;
    }
    Stop();
    return false;
}

void HoldTimer::Start() {
    std::lock_guard lock(_mutex);
    _startMs = clock();
    _running = true;
}

void HoldTimer::Stop() {
    std::lock_guard lock(_mutex);
    _running = false;
}

bool HoldTimer::RunningFor(double& elapsedMs) {
    std::lock_guard lock(_mutex);
    if (_running)
        elapsedMs = clock() - _startMs;
    return _running;
}

}
