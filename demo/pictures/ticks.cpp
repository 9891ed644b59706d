#include "demo/pictures/ticks.h"

#include <algorithm>
#include <cmath>

#include "follower/format.h"

namespace controller_base::demo {
namespace {

constexpr double kSlack = 1e-9;  // of a step; what rounding may do to a round number

double PowerOfTenBelow(double value) { return std::pow(10.0, std::floor(std::log10(value) + kSlack)); }

// The smallest of 1, 2 or 5 times a power of ten that is not below `limit`.
double RoundAbove(double limit) {
  const double power = PowerOfTenBelow(limit);
  for (const double round : {1.0, 2.0, 5.0}) {
    if (round * power >= limit) {
      return round * power;
    }
  }
  return 10.0 * power;
}

}  // namespace

double RoundBelow(double limit) {
  const double power = PowerOfTenBelow(limit);
  double highest = power;
  for (const double round : {2.0, 5.0}) {
    highest = round * power <= limit * (1.0 + kSlack) ? round * power : highest;
  }
  return highest;
}

std::vector<double> RoundTicks(double low, double high, int most) {
  const double step = RoundAbove((high - low) / most);
  std::vector<double> ticks;
  const double slack = kSlack * step;
  for (double i = std::ceil((low - slack) / step); i * step <= high + slack; ++i) {
    ticks.push_back(i == 0.0 ? 0.0 : i * step);  // no negative zero
  }
  return ticks;
}

std::string TickText(double value, double step) {
  const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + kSlack)));
  return follower::Format("%.*f", decimals, value);
}

}  // namespace controller_base::demo
