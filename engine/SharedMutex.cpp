#include "engine/SharedMutex.h"

namespace quorl {

void SharedMutex::lock_shared() {
    std::unique_lock guard(_mutex);
    _condition.wait(guard, [this] { return !_writer; });
    ++_readers;
}

void SharedMutex::unlock_shared() {
    std::unique_lock guard(_mutex);
    if (_readers-- == 1)
        _condition.notify_one();
}

void SharedMutex::lock() {
    std::unique_lock guard(_mutex);
    _condition.wait(guard, [this] { return _readers == 0 && !_writer; });
    _writer = true;
}

void SharedMutex::unlock() {
    std::unique_lock guard(_mutex);
    _writer = false;
    _condition.notify_all();
}

}
