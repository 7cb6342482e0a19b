// The track record lives in the public header that format readers built
// apart from the program share with it.
#pragma once

#include "tavrinsonic/track_info.h"
