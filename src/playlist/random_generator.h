// The random numbers behind shuffle play and every random pick of the list.
//
// The list's formula (see PlaylistView::RandomIndex) expects values from 0 to
// 32767, as the C runtime's rand gives them. The generator is an interface so
// that tests can script or seed it.
#pragma once

#include <cstdint>

namespace playlist {

class RandomGenerator {
 public:
  static constexpr int kMaxValue = 32767;

  virtual ~RandomGenerator() = default;
  // Starts a new sequence; the list seeds with a millisecond counter.
  virtual void Seed(std::uint32_t seed) = 0;
  // A value from 0 to kMaxValue.
  virtual int Next() = 0;
};

// The classic C runtime generator: a linear congruence on 32 bits whose bits
// 16 to 30 are the result.
class CrtRandom final : public RandomGenerator {
 public:
  explicit CrtRandom(std::uint32_t seed = 1) : state(seed) {}
  void Seed(std::uint32_t seed) override { state = seed; }
  int Next() override {
    state = state * 214013u + 2531011u;
    return static_cast<int>((state >> 16) & 0x7FFFu);
  }

 private:
  std::uint32_t state;
};

// Milliseconds since an arbitrary start, wrapping at 32 bits: the seed source.
std::uint32_t MillisecondTicks();

}  // namespace playlist
