#pragma once

#include "engine/Export.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace quorl {

/// Readers-writer lock. A waiting writer does not hold back new readers, so a reader may take the shared side again
/// on the same thread (nested walks over one registry) as long as no writer is active. Use it through
/// std::shared_lock for the shared side and std::unique_lock for the exclusive side.
class QUORL_EXPORT SharedMutex {
public:
    void lock_shared();
    void unlock_shared();
    void lock();
    void unlock();

private:
    std::mutex _mutex;
    std::condition_variable _condition;
    uint32_t _readers = 0;
    bool _writer = false;
};

}
