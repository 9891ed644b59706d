#include "demo/watch/live_drive.h"

namespace controller_base_demo {

LiveDrive::LiveDrive(const DrivePublisher& publisher, const std::string& rviz_config, const std::function<bool()>& stop)
    : input_([this] { return rviz_ && rviz_->IsOpen(); }) {
  if (!rviz_config.empty()) {
    rviz_.emplace(rviz_config);
    rviz_->WaitUntil([&] { return publisher.IsWatched(); }, stop);
  }
}

}  // namespace controller_base_demo
