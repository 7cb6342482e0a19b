// A straightforward model of the equalizer and extra bass for the tests and
// benchmarks: every frame goes through every filter in turn, channel by
// channel, with the three history slots and their rotating index exactly as
// the filters are described, and nothing shared with the production loops
// but the coefficient tables and the slider-to-gain conversion. The fast
// loops must give the same bits as this model.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace effects::test_support {

class ReferenceEqualizer {
 public:
  explicit ReferenceEqualizer(bool usePrecise) : precise(usePrecise) {}

  void SetBands(std::int32_t preampSlider, const std::array<std::int32_t, 10>& bands);
  void SetBassGain(std::int32_t gain) { bassGain = gain; }
  void SetEnabled(bool on) { enabled = on; }

  // Returns bytes, or 0 when disabled.
  int Process(std::int16_t* samples, std::size_t bytes);
  // Runs extra bass when the gain is set (mode 0 is the caller's business).
  void ApplyBass(std::int16_t* samples, std::size_t bytes);

  // When set, the precise filters append each output before it is clipped.
  std::vector<std::int32_t>* unclipped = nullptr;

 private:
  struct Slots {
    std::int32_t x[3] = {0, 0, 0};
    std::int32_t y[3] = {0, 0, 0};
  };
  using Bank = Slots[10][2];
  struct Index {
    int n = 0, n1 = 2, n2 = 1;
    void Rotate() {
      n = (n + 1) % 3;
      n1 = (n1 + 1) % 3;
      n2 = (n2 + 1) % 3;
    }
  };

  std::int32_t PreciseSample(int channel, std::int16_t sample);
  std::int32_t PlainSample(int channel, std::int16_t& sample);

  bool precise;
  bool enabled = true;
  bool flat = true;
  std::int32_t preamp = 14;
  std::int32_t gainQ14[10] = {};
  std::int32_t gainQ28[10] = {};
  std::int32_t bassGain = 0;
  Bank plainBank;
  Bank stage1;
  Bank stage2;
  Index eqIndex;
  Slots bass1[2];
  Slots bass2[2];
  Index bassIndex;
};

}  // namespace effects::test_support
