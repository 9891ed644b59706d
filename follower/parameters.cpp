#include "controller_base/follower/parameters.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>

#include "follower/format.h"

namespace controller_base::follower {
namespace {

constexpr double kHalfTurn = 3.15;  // rad, rounded up

using P = Parameters;
constexpr ParameterField kFields[] = {
    {"robot_radius", "m", 0.01, 5.0, &P::robot_radius},
    {"bumper_side_bearing", "rad", 0.0, kHalfTurn, &P::bumper_side_bearing},
    {"cruise_speed", "m/s", 0.01, 5.0, &P::cruise_speed},
    {"speed_near_obstacles", "m/s", 0.01, 5.0, &P::speed_near_obstacles},
    {"leaving_speed", "m/s", 0.01, 5.0, &P::leaving_speed},
    {"back_off_speed", "m/s", 0.01, 5.0, &P::back_off_speed},
    {"comfortable_turn_rate", "rad/s", 0.05, 20.0, &P::comfortable_turn_rate},
    {"max_turn_rate", "rad/s", 0.05, 20.0, &P::max_turn_rate},
    {"acceleration", "m/s^2", 0.01, 20.0, &P::acceleration},
    {"turn_acceleration", "rad/s^2", 0.05, 100.0, &P::turn_acceleration},
    {"deceleration", "m/s^2", 0.01, 20.0, &P::deceleration},
    {"braking", "m/s^2", 0.01, 20.0, &P::braking},
    {"reaction_time", "s", 0.0, 5.0, &P::reaction_time},
    {"lookahead", "m", 0.06, 10.0, &P::lookahead},
    {"shortest_lookahead", "m", 0.06, 10.0, &P::shortest_lookahead},
    {"turn_on_spot", "rad", 0.01, kHalfTurn, &P::turn_on_spot},
    {"turn_on_spot_near_obstacles", "rad", 0.01, kHalfTurn, &P::turn_on_spot_near_obstacles},
    {"near_margin", "m", 0.0, 1.0, &P::near_margin},
    {"line_clearance", "m", 0.0, 1.0, &P::line_clearance},
    {"goal_tolerance", "m", 0.001, 10.0, &P::goal_tolerance},
    {"goal_heading_tolerance", "rad", 0.01, kHalfTurn, &P::goal_heading_tolerance},
    {"latch_goal", "", 0.0, 1.0, &P::latch_goal},
    {"detour_horizon", "m", 0.1, 100.0, &P::detour_horizon},
    {"corridor_widths", "m", 0.01, 100.0, &P::corridor_widths},
    {"planning_clearance", "m", 0.001, 10.0, &P::planning_clearance},
    {"blockage_timeout", "s", 0.0, 1000.0, &P::blockage_timeout},
    {"search_pause", "s", 0.0, 1000.0, &P::search_pause},
    {"waiting_distance", "m", 0.0, 100.0, &P::waiting_distance},
    {"rejoin_distance", "m", 0.001, 10.0, &P::rejoin_distance},
    {"back_off_distance", "m", 0.0, 10.0, &P::back_off_distance},
    {"back_off_room", "m", 0.0, 10.0, &P::back_off_room},
    {"longest_back_off", "s", 0.0, 1000.0, &P::longest_back_off},
    {"longest_turn", "s", 0.0, 1000.0, &P::longest_turn},
    {"turn_tolerance", "rad", 0.001, kHalfTurn, &P::turn_tolerance},
    {"forget_pause", "s", 0.0, 1000.0, &P::forget_pause},
    {"longest_clock_step", "s", 0.01, 1000.0, &P::longest_clock_step},
    {"longest_pose_step", "m", 0.01, 100.0, &P::longest_pose_step},
    {"progress_pause", "s", 0.01, 1e6, &P::progress_pause},
};

void CheckRange(const ParameterField& field, double value) {
  if (!(value >= field.lowest && value <= field.highest)) {
    throw std::invalid_argument(Format("%s is %g %s; it must be within %g and %g %s", field.name, value, field.unit,
                                       field.lowest, field.highest, field.unit));
  }
}

void CheckRange(const ParameterField& field, const std::vector<double>& values) {
  if (values.empty()) {
    throw std::invalid_argument(std::string(field.name) + " is empty; it must have at least one value");
  }
  for (const double value : values) {
    CheckRange(field, value);
  }
  if (!std::is_sorted(values.begin(), values.end())) {
    throw std::invalid_argument(std::string(field.name) + " must not fall");
  }
}

// Two fields of which the first may not be above the second.
struct Order {
  const char* lower_name;
  double P::*lower;
  const char* upper_name;
  double P::*upper;
};
constexpr Order kOrders[] = {
    {"comfortable_turn_rate", &P::comfortable_turn_rate, "max_turn_rate", &P::max_turn_rate},
    {"deceleration", &P::deceleration, "acceleration", &P::acceleration},
    {"braking", &P::braking, "acceleration", &P::acceleration},
    {"shortest_lookahead", &P::shortest_lookahead, "lookahead", &P::lookahead},
};

}  // namespace

const std::vector<ParameterField>& ParameterFields() {
  static const std::vector<ParameterField> fields(std::begin(kFields), std::end(kFields));
  return fields;
}

void CheckParameters(const Parameters& parameters) {
  for (const ParameterField& field : ParameterFields()) {
    std::visit([&](auto member) { CheckRange(field, parameters.*member); }, field.value);
  }
  for (const Order& order : kOrders) {
    if (parameters.*order.lower > parameters.*order.upper) {
      throw std::invalid_argument(std::string(order.lower_name) + " is above " + order.upper_name);
    }
  }
}

}  // namespace controller_base::follower
