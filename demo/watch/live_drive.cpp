#include "demo/watch/live_drive.h"

namespace controller_base_demo {

LiveDrive::LiveDrive() : input_([this] { return rviz_ && rviz_->IsOpen(); }) {}

void LiveDrive::OpenRviz(const std::string& config_file, const DrivePublisher& publisher,
                         const std::function<bool()>& stop) {
  rviz_.emplace(config_file);
  rviz_->WaitUntil([&] { return publisher.IsWatched(); }, stop);
}

}  // namespace controller_base_demo
