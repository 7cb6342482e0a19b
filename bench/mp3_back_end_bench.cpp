// Speed of the MP3 back-end against the floor: libmad's own decode loop.
//
// Both run over the same 128 kbit/s stereo MP3 (the test file repeated to a
// minute of sound, in memory) and produce the same rounded 16-bit PCM. The
// counter "realtime" is seconds of sound decoded per second of CPU time.
//   BareLibmad        mad_frame_decode + mad_synth_frame + conversion, one
//                     buffer for the whole file
//   BackEnd           decompress, one frame per call, input at the frame
//   BackEndInWindows  as the decoder will call it: an 8192-byte buffer
//                     refilled from the file and compacted after every frame
// mp3_decoder_bench.cpp adds the decoder itself to the same program, so the
// floor and the decoder are measured in one run.
#include <benchmark/benchmark.h>
#include <mad.h>

#include <cstring>
#include <vector>

#include "decoders/libmad_back_end.h"
#include "mp3_bench_media.h"

namespace {

using mp3_bench::kSampleRate;

const std::vector<std::uint8_t>& Mp3() {
  return mp3_bench::RepeatedMp3();
}

void ReportSpeed(benchmark::State& state, std::size_t frames) {
  const double seconds = static_cast<double>(frames) * 1152 / kSampleRate;
  state.counters["realtime"] =
      benchmark::Counter(seconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  state.counters["frames"] = static_cast<double>(frames);
}

inline std::int16_t Round(mad_fixed_t sample) {
  constexpr mad_fixed_t kHalf = mad_fixed_t{1} << (MAD_F_FRACBITS - 16);
  if (sample >= MAD_F_ONE - kHalf) return 32767;
  if (sample < -MAD_F_ONE) return -32768;
  return static_cast<std::int16_t>((sample + kHalf) >> (MAD_F_FRACBITS + 1 - 16));
}

void BareLibmad(benchmark::State& state) {
  std::vector<std::uint8_t> input = Mp3();
  input.resize(input.size() + MAD_BUFFER_GUARD, 0);
  std::vector<std::int16_t> pcm(1152 * 2);
  std::size_t frames = 0;
  for (auto _ : state) {
    mad_stream stream;
    mad_frame frame;
    mad_synth synth;
    mad_stream_init(&stream);
    mad_frame_init(&frame);
    mad_synth_init(&synth);
    mad_stream_buffer(&stream, input.data(), input.size());
    frames = 0;
    for (;;) {
      if (mad_frame_decode(&frame, &stream) != 0) {
        if (MAD_RECOVERABLE(stream.error)) continue;
        break;
      }
      mad_synth_frame(&synth, &frame);
      const mad_pcm& out = synth.pcm;
      for (unsigned i = 0; i < out.length; ++i) {
        pcm[2 * i] = Round(out.samples[0][i]);
        pcm[2 * i + 1] = Round(out.samples[1][i]);
      }
      benchmark::DoNotOptimize(pcm.data());
      ++frames;
    }
    mad_frame_finish(&frame);
    mad_stream_finish(&stream);
  }
  ReportSpeed(state, frames);
}

void BackEnd(benchmark::State& state) {
  const std::vector<std::uint8_t>& input = Mp3();
  std::vector<std::uint8_t> pcm(2 * 9216);
  std::size_t frames = 0;
  for (auto _ : state) {
    decoders::LibmadBackEnd backEnd;
    backEnd.init(0);
    backEnd.setformat(decoders::MakeMp3WaveFormat(2, 44100));
    frames = 0;
    std::size_t position = 0;
    while (position < input.size()) {
      std::uint32_t got = 0, used = 0;
      const auto left = static_cast<std::uint32_t>(input.size() - position);
      if (backEnd.decompress(input.data() + position, left, pcm.data(),
                             static_cast<std::uint32_t>(pcm.size()), &got, &used, 16) != 0) {
        break;
      }
      benchmark::DoNotOptimize(pcm.data());
      position += used;
      ++frames;
    }
  }
  ReportSpeed(state, frames);
}

void BackEndInWindows(benchmark::State& state) {
  const std::vector<std::uint8_t>& file = Mp3();
  std::vector<std::uint8_t> pcm(2 * 9216);
  std::vector<std::uint8_t> buffer(8192);
  std::size_t frames = 0;
  for (auto _ : state) {
    decoders::LibmadBackEnd backEnd;
    backEnd.init(0);
    backEnd.setformat(decoders::MakeMp3WaveFormat(2, 44100));
    frames = 0;
    std::size_t read = 0, fill = 0;
    for (;;) {
      const std::size_t take = std::min(buffer.size() - fill, file.size() - read);  // the file read
      std::memcpy(buffer.data() + fill, file.data() + read, take);
      read += take;
      fill += take;
      if (fill == 0) break;
      bool first = true;
      while (fill >= 4096 || (first && fill > 0)) {
        first = false;
        std::uint32_t got = 0, used = 0;
        if (backEnd.decompress(buffer.data(), static_cast<std::uint32_t>(fill), pcm.data(),
                               static_cast<std::uint32_t>(pcm.size()), &got, &used, 16) != 0) {
          fill = 0;  // the end of the file
          break;
        }
        benchmark::DoNotOptimize(pcm.data());
        std::memmove(buffer.data(), buffer.data() + used, fill - used);
        fill -= used;
        ++frames;
      }
      if (take == 0 && fill == 0) break;
    }
  }
  ReportSpeed(state, frames);
}

}  // namespace

BENCHMARK(BareLibmad)->Unit(benchmark::kMillisecond);
BENCHMARK(BackEnd)->Unit(benchmark::kMillisecond);
BENCHMARK(BackEndInWindows)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
