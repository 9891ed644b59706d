#include "simulation/random_source.h"

namespace controller_base::simulation {

// The sum of twelve even draws has a variance of 1.
double RandomSource::Normal(double deviation) {
  double sum = -6.0;
  for (int i = 0; i < 12; ++i) {
    sum += static_cast<double>(engine_()) / static_cast<double>(std::mt19937::max());
  }
  return deviation * sum;
}

}  // namespace controller_base::simulation
