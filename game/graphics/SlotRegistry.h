#pragma once

#include <cstddef>
#include <memory>
#include <shared_mutex>
#include <vector>

namespace game::graphics {

/// Enters `object` into the first slot whose object has died, or a new last slot, and returns the index. Ids thus
/// stay dense and are reused, and a consumer that scans the table sees holes only for what died since its last
/// scan. The caller holds the exclusive side of the table's mutex.
template<class T>
size_t TakeFirstFreeSlot(std::vector<std::weak_ptr<T>>& slots, std::shared_ptr<T> const& object) {
    for (size_t index = 0; index < slots.size(); ++index) {
        if (slots[index].expired()) {
            slots[index] = object;
            return index;
        }
    }
    slots.push_back(object);
    return slots.size() - 1;
}

/// Calls `visit` with every object of the table that is still alive, in slot order, holding the shared side of
/// `mutex` and a strong reference to the object for the call. `visit` must not make or drop objects of the table.
template<class T, class Mutex, class Visit>
void ForEachLiveSlot(std::vector<std::weak_ptr<T>> const& slots, Mutex& mutex, Visit&& visit) {
    std::shared_lock lock(mutex);
    for (auto const& slot : slots)
        if (auto object = slot.lock())
            visit(*object);
}

}
