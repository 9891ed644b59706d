#ifndef CONTROLLER_BASE_FOLLOWER_EVENT_KINDS_H_
#define CONTROLLER_BASE_FOLLOWER_EVENT_KINDS_H_

#include <array>

namespace controller_base_demo {

// Every kind that an Event can have; "no path" is told by who plans, the others by the follower.
constexpr std::array kEventKinds = {"path",     "no path", "progress", "deviation", "blocked", "free", "refused",
                                    "corridor", "repair",  "detour",   "rejoined",  "contact", "turn", "box",
                                    "forget",   "lost",    "pose",     "clock",     "arrival", "stop"};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_FOLLOWER_EVENT_KINDS_H_
