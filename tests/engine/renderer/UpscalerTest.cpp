#include "engine/renderer/Upscaler.h"

#include <gtest/gtest.h>

#include <string>

using quorl::renderer::Upscaler;
using Algo = Upscaler::UPSCALE_ALGO;

TEST(UpscalerTest, NamesRoundTripAndUnknownNamesGiveAuto) {
    for (char const* name : Upscaler::UPSCALER_ALGOS_STR)
        EXPECT_EQ(std::string(Upscaler::GetAlgoStrFromEnum(Upscaler::GetAlgoEnumFromStr(name))), name);
    EXPECT_EQ(Upscaler::GetAlgoEnumFromStr("AUTO"), Algo::AUTO);
    EXPECT_EQ(Upscaler::GetAlgoEnumFromStr("BILINEAR"), Algo::BILINEAR);
    EXPECT_EQ(Upscaler::GetAlgoEnumFromStr("XESS"), Algo::XESS);
    // Names are matched exactly.
    for (char const* unknown : {"bilinear", "FSR3", ""})
        EXPECT_EQ(Upscaler::GetAlgoEnumFromStr(unknown), Algo::AUTO) << unknown;
}

TEST(UpscalerTest, OnlyPlainScalingIsSupportedAndOnlyTheTemporalOnesAreTemporal) {
    struct Row {
        Algo algo;
        bool temporal;
        bool supported;
    };
    Row const rows[] = {
        {Algo::AUTO, false, true},
        {Algo::NONE, false, true},
        {Algo::BILINEAR, false, true},
        {Algo::FSR1, false, false},
        {Algo::FSR2, true, false},
        {Algo::DLSS, true, false},
        {Algo::XESS, true, false},
    };
    Upscaler const upscaler;
    for (auto const& row : rows) {
        SCOPED_TRACE(Upscaler::GetAlgoStrFromEnum(row.algo));
        EXPECT_EQ(upscaler.IsTemporal(row.algo), row.temporal);
        EXPECT_EQ(upscaler.IsSupported(row.algo), row.supported);
    }
}
