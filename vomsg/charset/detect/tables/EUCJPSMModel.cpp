// Made by tools/make_detect_tables.py from state-machines/EUCJPSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x44444444, 0x55444444, 0x44444444, 0x44445444, 0x44444444, 0x44444444, 0x44444444, 0x44444444,
    0x44444444, 0x44444444, 0x44444444, 0x44444444, 0x44444444, 0x44444444, 0x44444444, 0x44444444,
    0x55555555, 0x31555555, 0x55555555, 0x55555555, 0x22222225, 0x22222222, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x00000000, 0x00000000, 0x00000000, 0x50000000,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x11105343, 0x22221111, 0x11101022, 0x13111011, 0x00001113,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    2, 2, 2, 3, 1, 0,
    // clang-format on
};

const SMModel EUCJPSMModel = {{3, 7, 2, 15, kClasses}, 6, {3, 7, 2, 15, kStates}, kCharLengths, "EUC-JP"};
