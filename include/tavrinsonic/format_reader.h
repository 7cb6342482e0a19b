// The interface of a simple audio format, and of the AAC plug-in.
//
// A FormatReader knows one file format: it opens a file, says its sample
// rate, channels and length, delivers 16-bit PCM and seeks. Everything else
// (the decode thread, the locks, the output streams) belongs to the
// program's ReaderDecoder, which drives one reader.
//
// This header is the whole contract with a plug-in: a shared library built
// apart from the program, by the same compiler, that exports
//
//   extern "C" playback::FormatReader* CreateDecoderInstance();
//
// returning a new reader made with `new`; the program destroys it with
// `delete`. The virtual operations keep this order, and every argument is a
// plain C type, so a library built against this header fits any build of
// the program that has the same header. A plug-in calls the ByteSource and
// TrackInfo it is handed through their virtual operations only.
//
// Units: sample counts count 16-bit values, interleaved: 0.5 s of 44100 Hz
// stereo is 44100 samples (22050 frames). Times are milliseconds. Paths are
// UTF-8 bytes as the file system has them.
//
// Calling order: SetSource, Open, then GetFormat once when playing starts,
// Read and Seek as the music goes, Close. GetTrackInfo may come at any time,
// for any file, and from another thread than the others: it must not touch
// the open file or any state that Read and Seek use.
//
// Threads: the program serialises Open, Seek, Read, Close and GetFormat under
// its own lock; GetTrackInfo and GetDuration are not locked.
#pragma once

#include <cstdint>

#include "tavrinsonic/byte_source.h"
#include "tavrinsonic/track_info.h"

namespace playback {

class FormatReader {
 public:
  FormatReader() = default;
  FormatReader(const FormatReader&) = delete;
  FormatReader& operator=(const FormatReader&) = delete;

  // 1.
  virtual ~FormatReader() = default;
  // 2. Called first on each Open: the program's shared byte source (which a
  //    reader may ignore and open the file its own way) and the path.
  virtual void SetSource(ByteSource* source, const char* path) = 0;
  // 3. Prepares to read from the start; non-zero on success.
  virtual int Open(const char* path) = 0;
  // 4. Milliseconds, at least 0. Returns the position reached in
  //    milliseconds, or -1 on failure; the next Read delivers from there.
  virtual int Seek(int milliseconds) = 0;
  // 5.
  virtual void Close() = 0;
  // 6. Sample rate in Hz and channel count of the open file; either out may
  //    be null. Non-zero on success.
  virtual int GetFormat(std::uint32_t* sampleRate, std::uint32_t* channels) = 0;
  // 7. Fills `info` for any file, open or not; non-zero on success.
  virtual int GetTrackInfo(const char* path, TrackInfo* info) = 0;
  // 8. Length of the open file in milliseconds.
  virtual std::uint32_t GetDuration() = 0;
  // 9. Delivers up to `wanted` interleaved samples; `got` gets the count,
  //    and 0 means the end. Returns non-zero unless reading failed.
  virtual int Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t* got) = 0;
};

// The entry point a plug-in exports, and its type.
inline constexpr const char* kCreateReaderEntryPoint = "CreateDecoderInstance";
using CreateReaderFunction = FormatReader* (*)();

}  // namespace playback
