#ifndef BENCHMARK_RANDOM_SOURCE_H_
#define BENCHMARK_RANDOM_SOURCE_H_

#include <cstdint>
#include <random>

namespace controller_base_benchmark {

// Random numbers that are the same with every standard library, which its distributions are not.
class RandomSource {
 public:
  explicit RandomSource(std::uint32_t seed) : engine_(seed) {}

  // A whole number in [low, high].
  int Between(int low, int high) { return low + static_cast<int>(engine_() % static_cast<unsigned>(high - low + 1)); }

 private:
  std::mt19937 engine_;
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_RANDOM_SOURCE_H_
