#pragma once

#include "game/Export.h"

#include <mutex>

namespace game::input {

/// The state behind one action's _Hold getter: a start time with a running flag, guarded by its own mutex since
/// _Hold may be called from any thread, and a count of the polls seen since the press.
class MERIDON_EXPORT HoldTimer {
public:
    /// Milliseconds of the system clock. Tests replace it to play presses of any length without waiting.
    static double (*clock)();

    /// One call of the action's _Hold with this pass's edges of the action; true once for a tap (a release within
    /// tapMs, or within three polls however long they took) or once when a hold reaches holdMs.
    bool Poll(bool pressed, bool released, bool held, double holdMs, double tapMs);

private:
    void Start();
    void Stop();
    /// Whether the timer runs; if so, elapsedMs becomes the milliseconds since Start.
    bool RunningFor(double& elapsedMs);

    std::mutex _mutex;
    double _startMs = 0.0;
    bool _running = false;
    /// Polls since the press. The mutex guards only the timer: a caller polls one action from one thread.
    int _counter = 0;
};

}
