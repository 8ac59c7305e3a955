#include "vomsg/charset/convert/VoMsgCharsetConverter.h"

VoMsgCharsetConverter::~VoMsgCharsetConverter() = default;
