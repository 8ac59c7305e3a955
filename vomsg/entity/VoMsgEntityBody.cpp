#include "vomsg/entity/VoMsgEntityBody.h"

VoMsgEntityBody::~VoMsgEntityBody() = default;
