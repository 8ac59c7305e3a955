#include "vomsg/entity/VoMsgMultipartBody.h"

VoMsgMultipartBody::VoMsgMultipartBody() = default;
VoMsgMultipartBody::~VoMsgMultipartBody() = default;

bool VoMsgMultipartBody::isMultipart() const { return true; }

void VoMsgMultipartBody::dumpEntityBody(std::FILE* out) const {
  if (!out) return;
  static constexpr char kIndent[] = "    ";
  std::fprintf(out, "%sBodyType          : VoMsgMultipartBody\n", kIndent);
  std::fprintf(out, "%smBodyOffset       : D'%d\n", kIndent, mBodyOffset);
  std::fprintf(out, "%smBodySize         : D'%d\n", kIndent, mBodySize);
}

void VoMsgMultipartBody::setNewBody() {
  mIsNewBody = true;
  mPreamble = "This is a multi-part message in MIME format.";
}
