// Made by tools/make_detect_tables.py from state-machines/ISO2022CNSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x00000002, 0x00000000, 0x00000000, 0x00001000, 0x00000000, 0x00000030, 0x00000000, 0x00000000,
    0x00004000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x00000130, 0x11111110, 0x22222211, 0x14111222, 0x11112111, 0x11111165, 0x11112111, 0x01211111,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 0, 0, 0, 0, 0, 0, 0, 0,
    // clang-format on
};

const SMModel ISO2022CNSMModel = {{3, 7, 2, 15, kClasses}, 9, {3, 7, 2, 15, kStates}, kCharLengths, "ISO-2022-CN"};
