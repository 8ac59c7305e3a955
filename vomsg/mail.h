// The modern face of the library, for C++17: messages, parts, mailboxes and settings as values. Header-only, over the
// exported interface alone, and usable beside it: each object gives the pointer it stands on. docs/tutorial.md walks
// through it.
#pragma once

#include "vomsg/mail/Address.h"
#include "vomsg/mail/Date.h"
#include "vomsg/mail/Error.h"
#include "vomsg/mail/Mailbox.h"
#include "vomsg/mail/Message.h"
#include "vomsg/mail/Part.h"
#include "vomsg/mail/SafeName.h"
#include "vomsg/mail/Settings.h"
#include "vomsg/mail/Winmail.h"
