#include "Journal.h"

#include <limits>
#include <map>
#include <mutex>

namespace journal {

namespace {
std::mutex mutex;
std::vector<std::string> entries;
std::map<std::string, double> notes;
}

void Record(std::string entry) {
    std::lock_guard lock(mutex);
    entries.push_back(std::move(entry));
}

std::vector<std::string> Entries() {
    std::lock_guard lock(mutex);
    return entries;
}

void Clear() {
    std::lock_guard lock(mutex);
    entries.clear();
    notes.clear();
}

std::vector<std::string> EntriesOf(std::string const& hook) {
    std::vector<std::string> found;
    for (auto& entry : Entries())
        if (entry.size() > hook.size() && entry.ends_with(":" + hook))
            found.push_back(entry);
    return found;
}

void Note(std::string const& key, double value) {
    std::lock_guard lock(mutex);
    notes[key] = value;
}

double LastNote(std::string const& key) {
    std::lock_guard lock(mutex);
    auto found = notes.find(key);
    return found == notes.end() ? std::numeric_limits<double>::quiet_NaN() : found->second;
}

}
