#include "follower/follower_session.h"

#include <utility>

namespace controller_base::follower {

FollowerSession::FollowerSession(FollowerObserver* observer, const Parameters& parameters)
    : observer_(observer),
      parameters_(parameters),
      follower_(std::make_unique<PathFollower>(static_cast<FollowerObserver*>(this), parameters)) {}

FollowerOutput FollowerSession::Cycle(const FollowerInput& input) {
  output_ = FollowerOutput();
  Take(input);
  output_.command = follower_->Cycle(input.robot, input.map.View());
  output_.outcome = follower_->outcome();
  output_.state = follower_->activity();
  output_.index = follower_->index();
  output_.deviation = follower_->deviation();
  output_.progress = follower_->progress();
  output_.ahead = follower_->ahead();
  output_.detour = follower_->detour();
  output_.blockage = follower_->blockage();
  output_.boxes = follower_->boxes();
  return std::move(output_);
}

void FollowerSession::Take(const FollowerInput& input) {
  if (input.parameters) {
    parameters_ = *input.parameters;
    follower_->SetParameters(parameters_);
  }
  if (input.is_fresh) {
    // The old one goes last: topics that stay advertised meanwhile cost no call of the master.
    follower_ = std::make_unique<PathFollower>(static_cast<FollowerObserver*>(this), parameters_);
  }
  if (input.path) {
    follower_->SetPath(*input.path);
  }
  for (const nav_controller::CollisionEvent& contact : input.contacts) {
    follower_->AddContact(contact);
  }
  for (const ros::Time& stamp : input.back_contacts) {
    follower_->AddBackContact(stamp);
  }
}

void FollowerSession::OnEvent(const Event& event) {
  output_.events.push_back(event);
  if (observer_ != nullptr) {
    observer_->OnEvent(event);
  }
}

void FollowerSession::OnDetour(const DetourReport& detour) {
  output_.detours.push_back(detour);
  if (observer_ != nullptr) {
    observer_->OnDetour(detour);
  }
}

}  // namespace controller_base::follower
