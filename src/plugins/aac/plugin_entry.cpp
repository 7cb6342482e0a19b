// The one symbol the plug-in library exports: the program finds it with
// dlsym and calls it once, at start-up.
#include <new>

#include "plugins/aac/aac_reader.h"

extern "C" __attribute__((visibility("default"))) playback::FormatReader* CreateDecoderInstance() {
  return new (std::nothrow) plugins::aac::AacReader();
}
