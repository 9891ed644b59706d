#include "demo/watch/live_drive.h"

namespace controller_base::demo {

LiveDrive::LiveDrive(bool takes_input) : input_([this] { return rviz_ && rviz_->IsOpen(); }) {
  if (takes_input) {
    input_.Listen();
  }
}

void LiveDrive::OpenRviz(const std::string& config_file, const DrivePublisher& publisher,
                         const std::function<bool()>& stop) {
  rviz_.emplace(config_file);
  rviz_->WaitUntil([&] { return publisher.IsWatched(); }, stop);
}

}  // namespace controller_base::demo
