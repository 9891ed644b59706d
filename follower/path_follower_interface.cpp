#include <stdexcept>

#include "controller_base/follower/path_follower.h"
#include "follower/local_map.h"
#include "follower/path_follower.h"

namespace controller_base::follower {

PathFollower::PathFollower(FollowerObserver* observer, const Parameters& parameters)
    : implementation_(std::make_unique<Implementation>(observer, parameters)) {}

PathFollower::~PathFollower() = default;

void PathFollower::SetPath(const nav_msgs::Path& path) {
  if (path.poses.empty()) {
    throw std::invalid_argument("a path without poses");
  }
  implementation_->SetPath(path);
}

void PathFollower::SetParameters(const Parameters& parameters) { implementation_->SetParameters(parameters); }

void PathFollower::Cancel() { implementation_->Cancel(); }

Command PathFollower::Cycle(const geometry_msgs::PoseStamped& robot, const LocalMapView& map) {
  return implementation_->Cycle(robot, ToCostmap(map));
}

void PathFollower::AddContact(const nav_controller::CollisionEvent& contact) { implementation_->AddContact(contact); }
void PathFollower::AddBackContact(const ros::Time& stamp) { implementation_->AddBackContact(stamp); }

const Outcome& PathFollower::outcome() const { return implementation_->outcome(); }
const char* PathFollower::activity() const { return implementation_->activity(); }
std::uint64_t PathFollower::index() const { return implementation_->tracker().index(); }
double PathFollower::deviation() const { return implementation_->tracker().deviation(); }
const nav_controller::ControlProgress& PathFollower::progress() const { return implementation_->progress(); }
const nav_msgs::Path& PathFollower::ahead() const { return implementation_->ahead(); }
std::shared_ptr<const DetourReport> PathFollower::detour() const { return implementation_->detour(); }
std::shared_ptr<const Blockage> PathFollower::blockage() const { return implementation_->blockage(); }
const std::vector<VirtualBox>& PathFollower::boxes() const { return implementation_->boxes(); }

}  // namespace controller_base::follower
