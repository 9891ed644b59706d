#include "benchmark/left_out_message.h"

#include "controller_base/path_map_filler.h"

namespace {

int left_out_messages = 0;

}  // namespace

void nav_controller::PathMapFiller::PublishGridMap(const costmap_2d::Costmap2D*) { ++left_out_messages; }

int controller_base_benchmark::LeftOutMessages() { return left_out_messages; }
