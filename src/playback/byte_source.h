// The byte source lives in the public header that format readers built apart
// from the program share with it; LockedFile (locked_file.h) is its one
// implementation for local files.
#pragma once

#include "tavrinsonic/byte_source.h"
