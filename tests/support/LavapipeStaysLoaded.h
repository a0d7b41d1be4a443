#pragma once

#include <dlfcn.h>

// Lavapipe keeps what its shader compiler allocates in globals of the driver library, which the loader unloads with
// the last instance; LeakSanitizer then reports those blocks as lost. Keeping the driver loaded for the whole process
// keeps them reachable. Where lavapipe is not installed this does nothing.
[[maybe_unused]] inline void* const lavapipeStaysLoaded = dlopen("libvulkan_lvp.so", RTLD_NOW | RTLD_NODELETE);
