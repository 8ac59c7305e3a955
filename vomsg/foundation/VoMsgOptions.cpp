#include "vomsg/foundation/VoMsgOptions.h"

namespace {

constexpr int kDefaultLimit = 100;

constexpr int limitOf(int limit) { return limit < 0 ? kDefaultLimit : limit; }

}  // namespace

int MaxEntityHeaders = kDefaultLimit;
int MaxHeaderAddress = kDefaultLimit;
int MaxHeaderParams = kDefaultLimit;
bool NoMaxAddressForChild = false;
int VoMsgExtraOption = 0;
unsigned long long MaxDecodedSize = 0;

void VoMsgSetMaxEntityHeaders(int limit) { MaxEntityHeaders = limitOf(limit); }
void VoMsgSetMaxHeaderAddress(int limit) { MaxHeaderAddress = limitOf(limit); }
void VoMsgSetMaxHeaderParams(int limit) { MaxHeaderParams = limitOf(limit); }
void VoMsgSetNoMaxAddressForChild(bool noLimit) { NoMaxAddressForChild = noLimit; }
void VoMsgSetMaxDecodedSize(unsigned long long bytes) { MaxDecodedSize = bytes; }
void VoMsgSetExtraOption(int bits) { VoMsgExtraOption |= bits; }
void VoMsgSetEncodeDot(int flag) {
  if (flag & 1) VoMsgExtraOption |= kVoOptionEncodeDot;
}
