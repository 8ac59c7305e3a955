#include "vomsg/filter/VoMsgTextFormatFilter.h"

VoMsgTextFormatFilter::~VoMsgTextFormatFilter() = default;
