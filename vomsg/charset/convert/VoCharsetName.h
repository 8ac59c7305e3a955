// Charset names: one canonical spelling for the aliases that mail uses, and questions about a name.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

// The canonical name (a static string), `name` itself when the table does not know it, null for null.
VOMSG_API const char* voGetFQNCharsetName(const char* name);
// True when both are given and equal, or have equal canonical names; case does not count.
VOMSG_API bool voIsEqualCharsetName(const char* a, const char* b);
// True when ICU can open a converter for the name. Null, "" and names that hold "/", "\" or control characters
// are never right.
VOMSG_API bool voIsRightCharsetName(const char* name);
// True when ICU knows the charset and no character takes more than one byte.
VOMSG_API bool voIsSinglebyteCharset(const char* name);
// The canonical name of the first charset with that Windows code page, or null.
VOMSG_API const char* voCodepageToCharset(int codepage);
// True for "unicode" and the UTF-16 and UTF-32 names.
VOMSG_API bool voIsUnicode(const char* name);
