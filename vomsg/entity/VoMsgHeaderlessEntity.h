// What entities without header fields have in common: they answer every question about fields with "none", and
// nobody gives them children.
#pragma once

#include "vomsg/entity/VoMsgEntity.h"

class VOMSG_API VoMsgHeaderlessEntity : public virtual VoMsgEntity {
 public:
  // kVoNotSupported.
  VoErrorCode appendChildEntity(VoMsgEntity* child) override;
  VoErrorCode insertChildEntityAt(VoMsgEntity* child, unsigned i) override;
  VoErrorCode removeChildEntityAt(unsigned i) override;
  VoErrorCode appendEntity(VoMsgEntity* entity) override;

  // Null, 0, kVoNotSupported.
  const char* getHeaderValue(const char* name, const char* charset) const override;
  const char* getRawHeaderValue(const char* name) const override;
  const char* getHeaderParameterValue(const char* name, const char* param, const char* charset) const override;
  const char* getRawHeaderParameterValue(const char* name, const char* param) const override;
  VoErrorCode setHeaderValue(const char* name, const char* value, const char* srcCharset,
                             const char* dstCharset) override;
  VoErrorCode setHeaderParameterValue(const char* name, const char* param, const char* value, const char* srcCharset,
                                      const char* dstCharset) override;
  unsigned countHeaders() const override;
  VoMsgHeaderField* getHeaderAt(unsigned i) const override;
  VoMsgHeaderField* getHeader(const char* name) const override;
  VoErrorCode appendHeader(VoMsgHeaderField* field) override;
  VoErrorCode insertHeaderAt(VoMsgHeaderField* field, unsigned i) override;
  VoErrorCode removeHeaderAt(unsigned i) override;
  VoErrorCode removeHeader(const char* name) override;
  VoErrorCode removeHeaderParameter(const char* name, const char* param) override;

  VoErrorCode setContentType(const char* contentType) override;  // kVoNotSupported
  unsigned getResourceSize(VoMsgResourceLocator* resource) override;

  // The parser does these steps itself: kVoNotSupported.
  VoErrorCode _readHeaderPart(const char* defaultCharset) override;
  VoErrorCode _readBodyPart(VoMsgBoundaryType& end) override;
  VoErrorCode _writeBoundarySeparator(VoMsgBufferedWriter* writer, bool first) override;
};
