// What an entity of a TNEF tree says about its content when no property does, by its type.
#pragma once

namespace vomsg::detail {

struct TnefEntityRow {
  const char* contentType;
  const char* encoding;  // null: none
};

// In the order of VoMsgTnefEntity::TnefEntityType.
inline constexpr TnefEntityRow kTnefEntityKinds[] = {
    {"application/octet-stream", nullptr},   // a record in memory
    {"text/plain", "8bit"},                  // the text of the message
    {"text/rtf", "8bit"},                    // its formatted text
    {"application/octet-stream", "binary"},  // an attachment, or attBody
    {"application/ms-tnef", "binary"},       // an object that is a stream of its own
    {"application/ms-tnef", "binary"},       // the message
};

}  // namespace vomsg::detail
