// A format reader that comes from a plug-in library.
//
// The library exports `CreateDecoderInstance` (tavrinsonic/format_reader.h),
// which makes one reader. LoadFormatPlugin tries candidate paths in order and
// keeps the first library that loads, has the entry point and gives a reader.
// Nothing of this is an error to report: without a plug-in its format is
// simply absent.
//
// Threads: the window thread, at start-up and at exit.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/shared_library.h"
#include "tavrinsonic/format_reader.h"

namespace playback {

// The file name of the AAC plug-in.
inline constexpr const char* kAacPluginFile = "libTSAACPlugin.so";

// The library and the reader it made. The reader goes before the library
// (member order), and whatever drives the reader must go before both.
struct FormatPlugin {
  platform::SharedLibrary library;
  std::unique_ptr<FormatReader> reader;
};

// The first candidate that gives a reader; null when none does.
std::unique_ptr<FormatPlugin> LoadFormatPlugin(const std::vector<std::string>& candidates);

// Where the AAC plug-in is looked for, in order: beside the executable (the
// installed player's bin folder, or a build tree's bin), then in the install
// directory (empty: not there).
std::vector<std::string> AacPluginCandidates(const std::string& executableDirectory,
                                             const std::string& installDirectory);

}  // namespace playback
