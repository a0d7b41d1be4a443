#pragma once

#include "engine/filesystem/ConfigFile.h"

#include <string>

namespace quorl::filesystem {

/// Text form of the field `conf` binds, as written to an INI file. Throws std::invalid_argument when the value
/// cannot be held by one line.
std::string FormatConfValue(ConfigFile::Conf const& conf);

/// Stores the value `text` stands for in the field `conf` binds. Throws std::invalid_argument, leaving the field
/// unchanged, when the text does not fit the field's type.
void ParseConfValue(ConfigFile::Conf const& conf, std::string const& text);

/// Whether `text` already stands for the field's current value, as "yes" does for true or "90.0" for 90.
bool ConfValueMatches(ConfigFile::Conf const& conf, std::string const& text);

}
