#ifndef CONTROLLER_BASE_RECORDING_FOLLOWER_MESSAGES_H_
#define CONTROLLER_BASE_RECORDING_FOLLOWER_MESSAGES_H_

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "follower/follower_session.h"
#include "recording/message.h"

namespace controller_base::recording {

// A follower's inputs and outputs as messages, with nothing lost: doubles stay doubles and cost bytes stay bytes. Below
// "/controller_base_demo/":
//
//   input/clock           Time               begins a cycle: what ros::Time::now() said
//   input/parameters      Float64MultiArray  when they change: a dimension for each, its label and size, and the values
//   input/is_fresh        Bool               true where a fresh follower takes over, which knows nothing of what was
//   input/path            Path               when there is a new one
//   input/contacts        Joy                one each, in order: its stamp, and the buttons `collided` and `type`
//   input/back_contacts   Time               one each: its stamp
//   input/robot           PoseStamped
//   input/local_map/...   a map
//
//   output/index          UInt64
//   output/deviation      Float64
//   output/progress       Float64MultiArray  moved, total, ratio of the distance; likewise of the time
//   output/ahead          Path
//   output/is_blocked     Bool
//   output/blockage/...   run and sides Path, is_bilateral Bool; where it is another one than in the cycle before
//   output/new_detours/...  a detour         one each
//   output/is_on_detour   Bool
//   output/detour/...     a detour           where another one is driven than in the cycle before
//   output/boxes          Float64MultiArray  x, y, z and heading of each
//   output/events         Marker             one each: its stamp, `ns` for the kind, position and text
//   output/state          String
//   output/outcome        String             "driving", "reached", "no progress" or "aborted"
//   output/reason         String
//   output/command        Twist              speed and turn rate
//
// A map is costs OccupancyGrid (the bytes as they are, in place of percentages), laser OccupancyGrid (100 where the
// laser marked the cell) and resolution Float64 (exactly; the grids round it). A detour is stamp Time, robot Pose2D,
// map/..., corridor OccupancyGrid, boxes as above, path, blocked and way Path, is_repaired and is_smoothed Bool.
constexpr char kInputPrefix[] = "/controller_base_demo/input/";
constexpr char kOutputPrefix[] = "/controller_base_demo/output/";
constexpr char kCycleTopic[] = "/controller_base_demo/input/clock";  // the first message of each cycle

std::vector<TopicMessage> InputMessages(const follower::FollowerInput& input);

// The cycles of one follower, one after the other: what hardly ever changes is told when it does. Causes come before
// what follows from them, so that the first difference between two followers tells most.
class OutputMessages {
 public:
  std::vector<TopicMessage> Next(const follower::FollowerOutput& output);

 private:
  std::shared_ptr<const follower::DetourReport> detour_;
  std::shared_ptr<const follower::Blockage> blockage_;
};

// Messages that are no input; what() is one line.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The inverse of InputMessages. Throws InputError where something is missing, has another type than it should, or makes
// no sense.
follower::FollowerInput ToInput(const std::vector<TopicMessage>& messages);

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_FOLLOWER_MESSAGES_H_
