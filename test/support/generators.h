#ifndef TEST_SUPPORT_GENERATORS_H_
#define TEST_SUPPORT_GENERATORS_H_

#include <rapidcheck.h>

#include <cstddef>
#include <vector>

#include "test/support/paths.h"

// What property tests draw from. Numbers lie on a grid, so that equal distances and exact multiples come up often.
namespace controller_base_test {

// low * unit, (low + 1) * unit .. high * unit.
inline rc::Gen<double> Multiples(int low, int high, double unit) {
  return rc::gen::map(rc::gen::inRange(low, high + 1), [unit](int count) { return count * unit; });
}

// A point within `reach` units of the origin along each axis.
inline rc::Gen<Xy> Points(int reach, double unit) {
  return rc::gen::apply(
      [](double x, double y) {
        return Xy{x, y};
      },
      Multiples(-reach, reach, unit), Multiples(-reach, reach, unit));
}

// fewest .. most such points.
inline rc::Gen<std::vector<Xy>> PointLists(std::size_t fewest, std::size_t most, int reach, double unit) {
  return rc::gen::mapcat(rc::gen::inRange(fewest, most + 1), [reach, unit](std::size_t count) {
    return rc::gen::container<std::vector<Xy>>(count, Points(reach, unit));
  });
}

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_GENERATORS_H_
