#pragma once

/// Marks what the engine layer offers to the game library, the launcher and modules; everything else stays hidden.
#define QUORL_EXPORT __attribute__((visibility("default")))
