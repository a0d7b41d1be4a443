#pragma once

#include <ostream>

/// What --verbose shows once the game has started, one line each, sorted: every module loaded with its classes, and
/// every registered entity type with its module.
void PrintLoaded(std::ostream& out);
