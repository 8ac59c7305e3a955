// Texts of bodies between charsets, from resource to resource.
#pragma once

#include <memory>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

// `content` in another charset ("?" for what that lacks), or as it is when nobody can convert it. With `target` (not
// null) it goes there, else into a new resource, which stays null for a text that needs none. `from` null: as it is.
VoErrorCode convertBody(const VoMsgResourceLocator& content, const char* to, const char* from,
                        const VoMsgResourceLocator* target, std::unique_ptr<VoMsgResourceLocator>& converted);

// The same into a new resource, where nothing may be lost. kVoConversionFailed: it would.
VoErrorCode convertExactly(const VoMsgResourceLocator& content, const char* to, const char* from,
                           std::unique_ptr<VoMsgResourceLocator>& converted);

// A text for a body: every line ends with CR LF, UTF-16 and UTF-32 are UTF-8.
struct MailText {
  std::unique_ptr<VoMsgResourceLocator> bytes;
  bool isMail = true;  // fit for a body without transfer encoding
};

// The text of `content`, which is in `from` ("" when nobody knows), converted to `to` (null: not). kVoConversionFailed:
// that would lose something.
VoErrorCode makeMailText(const VoMsgResourceLocator& content, const char* from, const char* to, MailText& text);

}  // namespace vomsg::detail
