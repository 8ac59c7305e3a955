// Made by tools/make_detect_tables.py from state-machines/ISO2022KRSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x00000002, 0x00000000, 0x00000000, 0x00001000, 0x00030000, 0x00000040, 0x00000000, 0x00000000,
    0x00005000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x11000130, 0x22221111, 0x11411122, 0x11151111, 0x00002111,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 0, 0, 0, 0, 0,
    // clang-format on
};

const SMModel ISO2022KRSMModel = {{3, 7, 2, 15, kClasses}, 6, {3, 7, 2, 15, kStates}, kCharLengths, "ISO-2022-KR"};
