#pragma once

/// Marks what the game library offers to the launcher and to modules; everything else stays hidden.
#define MERIDON_EXPORT __attribute__((visibility("default")))
