#include "follower/detour_search.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "controller_base/obstacle_blocking_analyzer.h"
#include "controller_base/path_interpolation.h"
#include "follower/format.h"
#include "follower/local_map.h"
#include "follower/path_geometry.h"
#include "follower/planning_costs.h"
#include "follower/refusal.h"

namespace controller_base::follower {
namespace {

constexpr double kSidePoint = 0.2;  // m from the path; where IsBilateralObstacle looks
constexpr double kSideWidth = 0.4;  // m to each side of a detour; a new one there passes on the same side

}  // namespace

DetourSearch::DetourSearch(const Parameters& parameters, const Reporter& reporter,
                           nav_controller::LocalPlanner* planner, ContactRecovery* recovery)
    : parameters_(parameters),
      reporter_(reporter),
      planner_(planner),
      recovery_(recovery),
      corridor_(std::make_shared<nav_controller::PathMapFiller>(1)) {}

void DetourSearch::Reset(const geometry_msgs::Point& goal) {
  goal_ = goal;
  blockage_.reset();
  side_.poses.clear();
  closed_.Forget();
  ForgetHindrance();
  SearchAtOnce();
}

void DetourSearch::SearchAtOnce() { next_search_ = ros::Time::now(); }

bool DetourSearch::IsDue() const { return ros::Time::now() >= next_search_; }

void DetourSearch::DetourIsBlocked(const geometry_msgs::Point& place) {
  if (!is_noted_) {
    closed_.Note(place);
    is_noted_ = true;
  }
}

void DetourSearch::DetourIsTooNarrow(const Pose2d& robot) {
  if (!hindrance_) {
    Hinder(DriveState::kBlocked, std::nullopt, "the detour is too narrow to be driven here");
    reporter_.Tell(EventKind::kBlocked, robot, hindrance_->text);
  }
}

void DetourSearch::DetourIsDriven() {
  if (hindrance_ && hindrance_->state == DriveState::kBlocked && !hindrance_->refusal) {
    ForgetHindrance();
  }
}

std::optional<DetourReport> DetourSearch::Search(const Situation& now) {
  next_search_ = ros::Time::now() + ros::Duration(parameters_.search_pause);
  const costmap_2d::Costmap2D& map = now.view.map();
  const nav_msgs::Path blocked = now.view.BlockedRun(now.ahead);
  Examine(now, blocked);
  const int cells = CorridorCells(now);
  const double width = cells * map.getResolution();
  const nav_msgs::Path stretch = StretchToRejoin(now, blocked);
  const std::optional<Plan> plan = MakePlan(now, stretch, cells);
  if (!plan) {
    Refused(now, stretch, width);
    return std::nullopt;
  }
  ForgetHindrance();
  side_.poses.clear();
  is_noted_ = false;
  reporter_.Tell(EventKind::kCorridor, now.pose, Format("%d cells (%.2f m) to each side of the path", cells, width));
  const bool is_repaired =
      Distance(plan->path.poses.back().pose.position, stretch.poses.back().pose.position) > map.getResolution();
  return DetourReport{ros::Time::now(),
                      now.pose,
                      ToLocalMapData(map),
                      corridor_->getOccupancyGrid(&map),
                      recovery_->boxes(),
                      stretch,
                      blocked,
                      plan->path,
                      is_repaired,
                      plan->smoothed};
}

std::optional<DetourSearch::Plan> DetourSearch::MakePlan(const Situation& now, const nav_msgs::Path& stretch,
                                                         int cells) {
  std::optional<Plan> plan = PlanOnSameSide(now, stretch);
  if (plan) {
    return plan;
  }
  corridor_->prepare(cells, &now.view.map(), now.ahead);
  return CreateSafePlan(now, stretch);
}

// Notes the blockage, and tells of it unless the robot waits for it already.
void DetourSearch::Examine(const Situation& now, const nav_msgs::Path& blocked) {
  const costmap_2d::Costmap2D& map = now.view.map();
  const bool is_bilateral = nav_controller::IsBilateralObstacle(&map, now.ahead);
  const auto [left, right] =
      nav_controller::CalculatePerpendicularPoints(blocked.poses.front(), blocked.poses.back(), kSidePoint);
  blockage_ = std::make_shared<Blockage>(Blockage{blocked, left, right, is_bilateral});
  if (hindrance_) {
    return;
  }
  const geometry_msgs::Point& first = blocked.poses.front().pose.position;
  const char* by = now.view.IsInBox(first)                                        ? "by virtual boxes"
                   : nav_controller::IsBlockingPathLaserObstacle(&map, now.ahead) ? "by a laser obstacle"
                                                                                  : "by an obstacle beside it";
  reporter_.Tell(EventKind::kBlocked, first,
                 Format("path blocked %.2f m ahead over %.2f m %s, %s", Distance(now.pose, first), PathLength(blocked),
                        by, is_bilateral ? "closed on both sides (bilateral)" : "a side is open"));
}

// How many cells the corridor reaches to each side: wider with each attempt, and where no side is open close by.
int DetourSearch::CorridorCells(const Situation& now) const {
  const std::vector<double>& widths = parameters_.corridor_widths;
  const std::size_t attempt = attempts_ + (blockage_->is_bilateral ? 1 : 0);
  const double width = widths[std::min(attempt, widths.size() - 1)];
  return static_cast<int>(std::lround(width / now.view.map().getResolution()));
}

// What the planner is to plan along: the path's stretch ahead, without an end that it could not reach. It ends on the
// local map, because the stretch ahead does. The way from the robot to its path is no place to fall back to. The
// planner repairs an end on the map's obstacles itself, unless the free place before it is near; it does not for an end
// in a box.
nav_msgs::Path DetourSearch::StretchToRejoin(const Situation& now, const nav_msgs::Path& blocked) const {
  nav_msgs::Path stretch = now.ahead;
  const auto ends_badly = [&] {
    const geometry_msgs::Point& end = stretch.poses.back().pose.position;
    return attempts_ > 0 ? now.view.IsBlocked(end) : now.view.IsInBox(end);
  };
  while (stretch.poses.size() > 1 && ends_badly()) {
    stretch.poses.pop_back();
  }
  const auto first_blocked = static_cast<std::size_t>(IndexOf(now.ahead, blocked.poses.front()));
  if (stretch.poses.size() <= first_blocked + 1) {
    stretch = now.ahead;
  }
  if (stretch.poses.size() > now.lead_in) {
    stretch.poses.erase(stretch.poses.begin(), stretch.poses.begin() + static_cast<std::ptrdiff_t>(now.lead_in));
  }
  return stretch;
}

// Within a narrow corridor around the detour that was driven so far and the rest of the stretch behind it.
std::optional<DetourSearch::Plan> DetourSearch::PlanOnSameSide(const Situation& now, const nav_msgs::Path& stretch) {
  if (side_.poses.empty()) {
    return std::nullopt;
  }
  nav_msgs::Path wanted = side_;
  const geometry_msgs::Point& end = side_.poses.back().pose.position;
  const auto nearest = std::min_element(stretch.poses.begin(), stretch.poses.end(), [&](const auto& a, const auto& b) {
    return Distance(a.pose.position, end) < Distance(b.pose.position, end);
  });
  wanted.poses.insert(wanted.poses.end(), nearest, stretch.poses.end());
  const costmap_2d::Costmap2D& map = now.view.map();
  corridor_->prepare(static_cast<int>(std::lround(kSideWidth / map.getResolution())), &map, wanted);
  return CreateSafePlan(now, stretch);
}

// A smoothed plan that is not safe is replaced by the one as it was searched, cell by cell.
std::optional<DetourSearch::Plan> DetourSearch::CreateSafePlan(const Situation& now, const nav_msgs::Path& stretch) {
  costmap_2d::Costmap2D map = WithPlanningCosts(now.view.map(), parameters_.planning_clearance);
  closed_.CloseOn(now.pose, &map);
  const auto plan = [&](bool smooth) { return planner_->CreatePlan(&map, corridor_, now.robot, stretch, smooth); };
  std::optional<nav_msgs::Path> detour = plan(true);
  if (!detour) {
    return std::nullopt;
  }
  const bool is_safe = IsSafe(now.view, *detour);
  if (!is_safe) {
    detour = plan(false);
  }
  return detour ? std::optional<Plan>({std::move(*detour), is_safe}) : std::nullopt;
}

// The shortcut smoother sees obstacles through the cost bytes 94..127 alone, and a line of cells that it found free may
// pass others too close. So each segment is asked about again, and each pose that the detour will be tracked by.
bool DetourSearch::IsSafe(const PlannerView& view, const nav_msgs::Path& detour) const {
  const auto is_blocked = [&](const geometry_msgs::PoseStamped& a, const geometry_msgs::PoseStamped& b) {
    return nav_controller::IsBlockingBetweenPoints(&view.map(), a.pose.position, b.pose.position) ||
           view.PassesClose(a.pose.position, b.pose.position, parameters_.line_clearance);
  };
  const nav_msgs::Path tracked = nav_core::math::LinearInterpolation(detour, kTrackingSpacing);
  return std::adjacent_find(detour.poses.begin(), detour.poses.end(), is_blocked) == detour.poses.end() &&
         view.BlockedRun(tracked).poses.empty();
}

// Another try is made with a wider corridor, unless the robot stands too near to an obstacle: it has to leave that
// first. When the widest is too narrow as well, the boxes are forgotten: what they stand for may be gone, and if it is
// not, the bumper tells.
void DetourSearch::Refused(const Situation& now, const nav_msgs::Path& stretch, double width) {
  const bool is_goal = Distance(stretch.poses.back().pose.position, goal_) < parameters_.goal_tolerance;
  const Refusal why = WhyRefused(*planner_, now.view.map(), now.robot, stretch);
  Hinder(DriveState::kBlocked, why, Explain(why, is_goal ? "the goal" : "the end of the stretch ahead", width));
  reporter_.Tell(EventKind::kRefused, now.pose, hindrance_->text);
  if (why == Refusal::kStartOccupied) {
    return;
  }
  ++attempts_;
  if (attempts_ >= parameters_.corridor_widths.size() && !recovery_->boxes().empty()) {
    recovery_->GiveWay(now.view, now.pose);
  }
}

void DetourSearch::PathIsFree(const Pose2d& robot) {
  if (hindrance_) {
    reporter_.Tell(EventKind::kFree, robot, "the path is free again");
  }
  ForgetHindrance();
  blockage_.reset();
  side_.poses.clear();
}

void DetourSearch::Lost(const Pose2d& robot, const std::string& why) {
  if (!hindrance_ || why != hindrance_->text) {
    reporter_.Tell(EventKind::kLost, robot, why + ": waiting");
    Hinder(DriveState::kLost, std::nullopt, why);
  }
}

void DetourSearch::Hinder(DriveState state, std::optional<Refusal> refusal, const std::string& text) {
  const ros::Time since = hindrance_ && hindrance_->state == state ? hindrance_->since : ros::Time::now();
  hindrance_ = Hindrance{state, since, refusal, text};
}

void DetourSearch::ForgetHindrance() {
  attempts_ = 0;
  hindrance_.reset();
}

}  // namespace controller_base::follower
