#ifndef CONTROLLER_BASE_SIMULATION_RANDOM_SOURCE_H_
#define CONTROLLER_BASE_SIMULATION_RANDOM_SOURCE_H_

#include <cstdint>
#include <random>

namespace controller_base::simulation {

// The same numbers on every machine, which the standard library's distributions do not promise.
class RandomSource {
 public:
  explicit RandomSource(std::uint32_t seed) : engine_(seed) {}

  // Nearly normal around 0, at most six deviations from it. `deviation` may be 0.
  double Normal(double deviation);

 private:
  std::mt19937 engine_;
};

}  // namespace controller_base::simulation

#endif  // CONTROLLER_BASE_SIMULATION_RANDOM_SOURCE_H_
