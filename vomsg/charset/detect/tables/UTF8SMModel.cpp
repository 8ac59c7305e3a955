// Made by tools/make_detect_tables.py from state-machines/UTF8SMModel.txt.
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

static constexpr std::uint32_t kClasses[] = {
    // clang-format off
    0x11111111, 0x00111111, 0x11111111, 0x11110111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111, 0x11111111,
    0x33332222, 0x44444444, 0x44444444, 0x44444444, 0x55555555, 0x55555555, 0x55555555, 0x55555555,
    0x66666600, 0x66666666, 0x66666666, 0x66666666, 0x88888887, 0x88988888, 0xbbbbbbba, 0x00fedddc,
    // clang-format on
};

static constexpr std::uint32_t kStates[] = {
    // clang-format off
    0xac111101, 0x345678b9, 0x11111111, 0x11111111, 0x22222222, 0x22222222, 0x11555511, 0x11111111,
    0x11555111, 0x11111111, 0x11777711, 0x11111111, 0x11771111, 0x11111111, 0x11999911, 0x11111111,
    0x11911111, 0x11111111, 0x11cccc11, 0x11111111, 0x11c11111, 0x11111111, 0x111ccc11, 0x11111111,
    0x11000011, 0x11111111,
    // clang-format on
};

static constexpr std::uint32_t kCharLengths[] = {
    // clang-format off
    0, 1, 0, 0, 0, 0, 2, 3, 3, 3, 4, 4, 5, 5, 6, 6,
    // clang-format on
};

const SMModel UTF8SMModel = {{3, 7, 2, 15, kClasses}, 16, {3, 7, 2, 15, kStates}, kCharLengths, "UTF-8"};
