#include "engine/renderer/Upscaler.h"

#include <cstring>

namespace quorl::renderer {

Upscaler::UPSCALE_ALGO Upscaler::GetAlgoEnumFromStr(char const* name) {
    for (size_t i = 0; i < UPSCALER_ALGOS_STR.size(); ++i)
        if (name && std::strcmp(name, UPSCALER_ALGOS_STR[i]) == 0)
            return static_cast<UPSCALE_ALGO>(i);
    return UPSCALE_ALGO::AUTO;
}

char const* Upscaler::GetAlgoStrFromEnum(UPSCALE_ALGO algo) {
    return UPSCALER_ALGOS_STR[static_cast<size_t>(algo)];
}

bool Upscaler::IsTemporal(UPSCALE_ALGO algo) const {
    return algo == UPSCALE_ALGO::FSR2 || algo == UPSCALE_ALGO::DLSS || algo == UPSCALE_ALGO::XESS;
}

bool Upscaler::IsSupported(UPSCALE_ALGO algo) const {
    return algo == UPSCALE_ALGO::AUTO || algo == UPSCALE_ALGO::NONE || algo == UPSCALE_ALGO::BILINEAR;
}

}
