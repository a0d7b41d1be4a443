#pragma once

#include <string>
#include <vector>

/// What the test modules did, in order: one entry such as "TEST_alpha.GAME_Mod:Game_Start" per hook call. The
/// modules and the test executable share this library, so both see one journal.
namespace journal {

__attribute__((visibility("default"))) void Record(std::string entry);
__attribute__((visibility("default"))) std::vector<std::string> Entries();
__attribute__((visibility("default"))) void Clear();
/// The entries that end with ":" + hook.
__attribute__((visibility("default"))) std::vector<std::string> EntriesOf(std::string const& hook);
/// The last value a module noted under `key` (a hook's argument, say); NaN if none.
__attribute__((visibility("default"))) void Note(std::string const& key, double value);
__attribute__((visibility("default"))) double LastNote(std::string const& key);

}
