#include "vomsg/foundation/VoMsgOptions.h"

#include <gtest/gtest.h>

namespace {

TEST(VoMsgOptions, NegativeLimitRestoresTheDefaultAndZeroStays) {
  struct Limit {
    int* value;
    void (*set)(int);
  } const limits[] = {{&MaxEntityHeaders, VoMsgSetMaxEntityHeaders},
                      {&MaxHeaderAddress, VoMsgSetMaxHeaderAddress},
                      {&MaxHeaderParams, VoMsgSetMaxHeaderParams}};
  for (const Limit& limit : limits) {
    EXPECT_EQ(*limit.value, 100);
    for (const int value : {7, 0}) {
      limit.set(value);
      EXPECT_EQ(*limit.value, value);
    }
    limit.set(-5);
    EXPECT_EQ(*limit.value, 100);
  }
}

TEST(VoMsgOptions, BitsAreOnlyEverAdded) {
  const int before = VoMsgExtraOption;
  VoMsgExtraOption = 0;
  VoMsgSetEncodeDot(2);
  EXPECT_EQ(VoMsgExtraOption, 0);
  VoMsgSetEncodeDot(3);
  EXPECT_EQ(VoMsgExtraOption, kVoOptionEncodeDot);
  VoMsgSetExtraOption(kVoOptionRawSubject);
  VoMsgSetExtraOption(0);
  VoMsgSetEncodeDot(0);
  EXPECT_EQ(VoMsgExtraOption, kVoOptionEncodeDot | kVoOptionRawSubject);
  VoMsgExtraOption = before;
}

}  // namespace
