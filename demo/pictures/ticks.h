#ifndef CONTROLLER_BASE_DEMO_PICTURES_TICKS_H_
#define CONTROLLER_BASE_DEMO_PICTURES_TICKS_H_

#include <string>
#include <vector>

namespace controller_base::demo {

// Round numbers for an axis from `low` to `high`, both included where they are round: steps of 1, 2 or 5 times a power
// of ten, at most `most` of them. `low` < `high`, `most` > 0.
std::vector<double> RoundTicks(double low, double high, int most);

// The largest of 1, 2 or 5 times a power of ten that is not above `limit`, which is positive.
double RoundBelow(double limit);

// The number as it stands at a tick of an axis: with the decimals that tell it from one a step of `step` away.
std::string TickText(double value, double step);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PICTURES_TICKS_H_
