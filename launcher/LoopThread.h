#pragma once

#include "engine/FPSCounter.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>

/// One of the game's loops on a thread of its own: runs `body` at `hz` passes per second, ticking `counter`, while
/// Game::isActive holds and `body` returns true. An exception from the body is reported, marks the loop failed and
/// quits the game, so that one broken loop brings the process down in order instead of hanging the others. A loop
/// destroyed before it was joined quits the game too.
class LoopThread {
public:
    using Body = std::function<bool(double deltaSeconds)>;

    LoopThread(std::string name, double hz, quorl::FPSCounter& counter, Body body);
    ~LoopThread();
    LoopThread(LoopThread const&) = delete;
    LoopThread& operator=(LoopThread const&) = delete;

    std::string const& Name() const { return _name; }
    quorl::FPSCounter const& Counter() const { return _counter; }
    bool Failed() const { return _failed; }
    void Join();

private:
    void Run();

    std::string _name;
    double _hz;
    quorl::FPSCounter& _counter;
    Body _body;
    std::atomic<bool> _failed = false;
    std::thread _thread;
};
