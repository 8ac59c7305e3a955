#include "vomsg/entity/VoMsgMailSessionInfo.h"

VoMsgMailSessionInfo::~VoMsgMailSessionInfo() = default;
