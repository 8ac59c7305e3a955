// Made by tools/make_detect_tables.py from state-machines/ISO2022JPSMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x00000002, 0x22000000, 0x00000000, 0x00001000, 0x00070000, 0x00000003, 0x00000000, 0x00000000,
    0x00000406, 0x00000500, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222, 0x22222222,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0x00000130, 0x11111111, 0x22222222, 0x41115111, 0x12121111, 0x11221111,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 0, 0, 0, 0, 0, 0, 0,
    // clang-format on
};

const SMModel ISO2022JPSMModel = {{3, 7, 2, 15, kClasses}, 8, {3, 7, 2, 15, kStates}, kCharLengths, "ISO-2022-JP"};
