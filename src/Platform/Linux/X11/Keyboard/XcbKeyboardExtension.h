#pragma once

// The C header of the XKB extension has a field of this name.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
