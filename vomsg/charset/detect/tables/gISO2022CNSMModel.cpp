// Made by tools/make_detect_tables.py from state-machines/gISO2022CNSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x00000002, 0x00000000, 0x00000000, 0x00001000, 0x00030000, 0x00000654, 0x00000000, 0x00000000,
    0x70000870, 0x00000009, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x00000130, 0x11111100, 0x22221111, 0x11222222, 0x11111541, 0x17611111, 0x11111111, 0x11111211,
    0x11112111, 0x21111111,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    // clang-format on
};

const SMModel gISO2022CNSMModel = {{3, 7, 2, 15, kClasses}, 10, {3, 7, 2, 15, kStates}, kCharLengths, "ISO-2022-CN"};
