#ifndef TEST_SUPPORT_RANDOM_SOURCE_H_
#define TEST_SUPPORT_RANDOM_SOURCE_H_

#include <cstdint>
#include <random>

namespace controller_base_test {

// Random numbers that a seed determines.
class RandomSource {
 public:
  explicit RandomSource(std::uint32_t seed) : engine_(seed) {}

  // Both ends included.
  int Between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
  bool OneIn(int n) { return Between(1, n) == 1; }

 private:
  std::mt19937 engine_;
};

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_RANDOM_SOURCE_H_
