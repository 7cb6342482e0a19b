#include "plugins/aac/faad_decoder.h"

#include <neaacdec.h>

#include <cstring>

namespace plugins::aac {
namespace {

constexpr std::size_t kGuardBytes = 64;

}  // namespace

FaadDecoder::~FaadDecoder() {
  Close();
}

bool FaadDecoder::Open(const std::uint8_t* firstFrame, std::size_t bytes, std::uint32_t& sampleRate,
                       std::uint32_t& channels) {
  Close();
  NeAACDecHandle decoder = NeAACDecOpen();
  if (decoder == nullptr) return false;
  handle = decoder;
  NeAACDecConfigurationPtr configuration = NeAACDecGetCurrentConfiguration(decoder);
  configuration->outputFormat = FAAD_FMT_16BIT;
  configuration->downMatrix = 1;
  if (NeAACDecSetConfiguration(decoder, configuration) == 0) return false;
  frameCopy.assign(firstFrame, firstFrame + bytes);
  frameCopy.resize(bytes + kGuardBytes, 0);
  unsigned long rate = 0;
  unsigned char count = 0;
  if (NeAACDecInit(decoder, frameCopy.data(), static_cast<unsigned long>(bytes), &rate, &count) < 0)
    return false;
  sampleRate = static_cast<std::uint32_t>(rate);
  channels = count;
  return true;
}

void FaadDecoder::Close() {
  if (handle != nullptr) NeAACDecClose(static_cast<NeAACDecHandle>(handle));
  handle = nullptr;
}

bool FaadDecoder::Decode(const std::uint8_t* frame, std::size_t bytes, Output& output) {
  output = Output{};
  if (handle == nullptr) return false;
  frameCopy.assign(frame, frame + bytes);
  frameCopy.resize(bytes + kGuardBytes, 0);
  NeAACDecFrameInfo information;
  std::memset(&information, 0, sizeof information);
  void* samples = NeAACDecDecode(static_cast<NeAACDecHandle>(handle), &information, frameCopy.data(),
                                 static_cast<unsigned long>(bytes));
  if (information.error != 0) return false;
  if (samples == nullptr) return true;  // a frame that fills the filter bank only
  output.samples = static_cast<const std::int16_t*>(samples);
  output.count = static_cast<std::uint32_t>(information.samples);
  output.channels = information.channels;
  return true;
}

}  // namespace plugins::aac
