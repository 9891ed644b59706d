#ifndef CONTROLLER_BASE_FOLLOWER_PLAIN_NAMES_H_
#define CONTROLLER_BASE_FOLLOWER_PLAIN_NAMES_H_

// Simulation and demo still share one namespace and call the follower's types by their plain names.
namespace controller_base::follower {}
namespace controller_base_demo {
using namespace controller_base::follower;  // NOLINT(google-build-using-namespace)
}

#endif  // CONTROLLER_BASE_FOLLOWER_PLAIN_NAMES_H_
