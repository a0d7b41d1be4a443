#pragma once

#include "engine/Export.h"

#include <array>

namespace quorl::renderer {

/// The upscaling algorithms by name. Only plain scaling exists in this engine: NONE and the spatial bilinear
/// scaler; AUTO resolves to it. The others are named so that settings files from GPUs that have them stay valid.
class QUORL_EXPORT Upscaler {
public:
    enum class UPSCALE_ALGO { AUTO, NONE, BILINEAR, FSR1, FSR2, DLSS, XESS };
    static constexpr std::array<char const*, 7> UPSCALER_ALGOS_STR{"AUTO", "NONE", "BILINEAR", "FSR1", "FSR2", "DLSS",
        "XESS"};

    /// Upper-case name to algorithm; an unknown name gives AUTO.
    static UPSCALE_ALGO GetAlgoEnumFromStr(char const* name);
    static char const* GetAlgoStrFromEnum(UPSCALE_ALGO algo);
    bool IsTemporal(UPSCALE_ALGO algo) const;
    bool IsSupported(UPSCALE_ALGO algo) const;
};

}
