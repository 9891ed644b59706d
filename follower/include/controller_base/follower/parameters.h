#ifndef CONTROLLER_BASE_FOLLOWER_PARAMETERS_H_
#define CONTROLLER_BASE_FOLLOWER_PARAMETERS_H_

#include <variant>
#include <vector>

namespace controller_base::follower {

// All that a user may want to change about a PathFollower. Units and allowed ranges stand beside each field; both ends
// of a range are allowed. CheckParameters holds them.
struct Parameters {
  // The robot: a disc on two driven wheels.
  double robot_radius = 0.17;  // m, 0.01 to 5; from the centre to the farthest point of the body
  double bumper_side_bearing =
      0.8726646259971648;  // rad, 0 to 3.15; where a left contact is taken to be, a right one mirrored

  // Speeds and accelerations.
  double cruise_speed = 0.45;         // m/s, 0.01 to 5; where nothing is near. No command is faster
  double speed_near_obstacles = 0.2;  // m/s, 0.01 to 5; where the path bends before a near lethal cell
  double leaving_speed = 0.1;         // m/s, 0.01 to 5; out of an obstacle in which the robot finds itself
  double back_off_speed = 0.15;       // m/s, 0.01 to 5; backwards after a contact
  double comfortable_turn_rate =
      1.0;                         // rad/s, 0.05 to 20, not above max_turn_rate; sharper arcs are driven more slowly
  double max_turn_rate = 1.8;      // rad/s, 0.05 to 20; no command turns faster
  double acceleration = 1.0;       // m/s^2, 0.01 to 20; no command changes the speed faster, up or down
  double turn_acceleration = 6.0;  // rad/s^2, 0.05 to 100; likewise the turn rate
  double deceleration = 0.4;       // m/s^2, 0.01 to 20, not above acceleration; before a place to stop at
  double braking = 0.8;            // m/s^2, 0.01 to 20, not above acceleration; what the wheels give at least when
                                   // told to stop
  double reaction_time = 0.1;      // s, 0 to 5; until they begin

  // Steering.
  double lookahead = 0.4;                     // m, 0.06 to 10; at most that far ahead lies the target on the path
  double shortest_lookahead = 0.07;           // m, 0.06 to 10, not above lookahead; where the farther ones are blocked
  double turn_on_spot = 1.0;                  // rad, 0.01 to 3.15; a target farther to the side is faced first
  double turn_on_spot_near_obstacles = 0.15;  // rad, 0.01 to 3.15; likewise, where there is no room for the arc
  double near_margin = 0.04;                  // m, 0 to 1; a lethal cell this near counts as near to the path
  double line_clearance = 0.02;               // m, 0 to 1; a lethal cell this near to a straight line makes it tight

  // Arrival.
  double goal_tolerance = 0.05;          // m, 0.001 to 10; from the path's last pose
  double goal_heading_tolerance = 3.15;  // rad, 0.01 to 3.15; from that pose's heading, to which the robot turns on the
                                         // spot; half a turn: any heading will do
  bool latch_goal = true;  // once at that pose's place, it only turns, even if that moves it off the place

  // Detours.
  double detour_horizon = 1.8;  // m, 0.1 to 100; blocked farther ahead, the path is still followed. LocalPlanner falls
                                // back from an occupied goal only to a cell more than 30 cells away
  std::vector<double> corridor_widths = {0.6, 1.0, 1.5};  // m, 0.01 to 100, rising; to each side of the path. Each
                                                          // refused search is tried again with the next
  double planning_clearance = 0.15;                       // m, 0.001 to 10; more room than it insists on, if there is
  double blockage_timeout = 0.5;                          // s, 0 to 1000; a detour blocked for less is still driven
  double search_pause = 1.0;                              // s, 0 to 1000; between two searches
  double waiting_distance = 0.3;                          // m, 0 to 100; to the blockage, while no detour is found
  double rejoin_distance = 0.15;                          // m, 0.001 to 10; so near to its end a detour is done

  // Contacts.
  double back_off_distance = 0.2;  // m, 0 to 10
  double back_off_room = 0.1;      // m, 0 to 10; free behind the robot, or it does not back off
  double longest_back_off = 3.0;   // s, 0 to 1000
  double longest_turn = 5.0;       // s, 0 to 1000
  double turn_tolerance = 0.05;    // rad, 0.001 to 3.15
  double forget_pause = 2.0;       // s, 0 to 1000; no way being left around what was touched, until it is forgotten

  // Inputs and reports.
  double longest_clock_step = 1.0;  // s, 0.01 to 1000; a longer cycle is a jump of the clock
  double longest_pose_step = 0.3;   // m, 0.01 to 100; a longer step in one cycle is a jump of the localisation
  double progress_pause = 5.0;      // s, 0.01 to 1e6; between two reports of the progress
};

// A field of Parameters, by the name under which every source of parameters has it.
struct ParameterField {
  const char* name;
  const char* unit;
  double lowest;   // of the value, or of each
  double highest;  // likewise
  std::variant<double Parameters::*, std::vector<double> Parameters::*, bool Parameters::*> value;
};

// What to say of a parameter's value that has not the type of the argument.
inline const char* WrongType(double /*number*/) { return "is no number"; }
inline const char* WrongType(const std::vector<double>& /*numbers*/) { return "is no list of numbers"; }
inline const char* WrongType(bool /*flag*/) { return "is neither true nor false"; }

// All of them, in the order of the struct.
const std::vector<ParameterField>& ParameterFields();

// Throws std::invalid_argument, naming the first field that is not finite, is out of its range or does not go with
// another one.
void CheckParameters(const Parameters& parameters);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PARAMETERS_H_
