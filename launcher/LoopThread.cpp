#include "LoopThread.h"

#include "game/Game.h"

#include <chrono>
#include <iostream>

LoopThread::LoopThread(std::string name, double hz, quorl::FPSCounter& counter, Body body)
    : _name(std::move(name)), _hz(hz), _counter(counter), _body(std::move(body)), _thread([this] { Run(); }) {}

LoopThread::~LoopThread() {
    // Not joined yet: the owner is leaving by an exception while the game may still run. Without the quit the loop
    // would never end, and the join would hang with the quit signals blocked.
    if (_thread.joinable())
        Game::Quit();
    Join();
}

void LoopThread::Join() {
    if (_thread.joinable())
        _thread.join();
}

void LoopThread::Run() {
    using Clock = std::chrono::steady_clock;
    auto const period = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(_hz > 0 ? 1.0 / _hz : 0.0));
    auto next = Clock::now();
    try {
        while (Game::isActive) {
            double dt = _counter.Tick();
            bool more;
            {
                auto busy = _counter.Busy();
                more = _body(dt);
            }
            if (!more)
                break;
            // Pace to the rate; a pass that ran late starts the schedule again instead of rushing to catch up.
            next += period;
            auto now = Clock::now();
            if (next < now)
                next = now;
            else
                std::this_thread::sleep_until(next);
        }
    } catch (std::exception const& error) {
        std::cerr << "meridon: the " << _name << " loop stopped: " << error.what() << std::endl;
        _failed = true;
        Game::Quit();
    } catch (...) {
        std::cerr << "meridon: the " << _name << " loop stopped on an unknown exception" << std::endl;
        _failed = true;
        Game::Quit();
    }
}
