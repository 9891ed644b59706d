#ifndef CONTROLLER_BASE_DEMO_REPLAY_REPLAY_H_
#define CONTROLLER_BASE_DEMO_REPLAY_REPLAY_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "demo/messages/message.h"
#include "demo/replay/drive_bag.h"

namespace controller_base::demo {

// Where two followers said different things. The values are one line each: of the first field that differs, or how the
// message begins that only one of them said.
struct Difference {
  std::string output;  // topic
  std::string recorded;
  std::string replayed;
};

// The first difference; nothing when all messages are the same, bit by bit.
std::optional<Difference> FirstDifference(const std::vector<TopicMessage>& recorded,
                                          const std::vector<TopicMessage>& replayed);

struct ReplayReport {
  std::size_t cycles = 0;   // that were the same
  std::size_t outputs = 0;  // messages that were the same
  double time = 0.0;        // s since the drive began, of the last cycle
  std::optional<Difference> difference;
};

// Feeds the bag's inputs to a fresh follower until it says something else than the recorded one did. Needs what
// PathFollower needs, and sets the ROS clock of this process. `stop` is asked before each cycle, the first time when
// the follower is there, and ends the replay early. Throws BagError.
ReplayReport Replay(DriveBag* bag, const std::function<bool()>& stop);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_REPLAY_REPLAY_H_
