// The one macro that marks what libvomsg exports; everything else in the library is hidden.
#pragma once

#if defined(__GNUC__)
#define VOMSG_API __attribute__((visibility("default")))
#else
#define VOMSG_API
#endif
