#include "controller_base/path_map_filler.h"

#include <ros/node_handle.h>
#include <ros/time.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

namespace nav_controller {
namespace {

constexpr char kCorridorTopic[] = "/DWB/limit_map";
constexpr std::uint32_t kCorridorQueueSize = 1;
constexpr bool kLatched = true;
constexpr std::uint8_t kOutside = 0;  // any value other than the corridor's
constexpr int kWidestStroke = 32767;  // cells, what OpenCV draws at most
constexpr std::int8_t kOccupancyFree = 0;
constexpr std::int8_t kOccupancyOccupied = 100;

// The cells of the poses that lie on the map, in order, repeated ones too.
std::vector<cv::Point> CellsOnMap(const costmap_2d::Costmap2D& costmap, const nav_msgs::Path& path) {
  std::vector<cv::Point> cells;
  cells.reserve(path.poses.size());
  for (const geometry_msgs::PoseStamped& pose : path.poses) {
    unsigned int mx = 0;
    unsigned int my = 0;
    if (costmap.worldToMap(pose.pose.position.x, pose.pose.position.y, mx, my)) {
      cells.emplace_back(static_cast<int>(mx), static_cast<int>(my));
    }
  }
  return cells;
}

// The part of a grid of the given size that a corridor around `points` can mark; the whole grid where there is none.
// Stroke and disc reach width / 2 cells each, and one more for rounding.
cv::Rect ReachOfCorridor(const cv::Size& grid, const std::vector<cv::Point>& points, int width) {
  const int margin = std::clamp(width, 0, kWidestStroke) + 1;
  cv::Rect reach = cv::boundingRect(points);
  reach -= cv::Point(margin, margin);
  reach += cv::Size(2 * margin, 2 * margin);
  const cv::Rect whole(cv::Point(), grid);
  reach &= whole;
  return reach.empty() ? whole : reach;
}

// Of the `width` rows (or columns) of a disc, those that can matter on an image of `side` rows: their offset from the
// middle is less than that.
cv::Range RowsThatMatter(int width, int side) {
  const int middle = width / 2;
  return {std::max(0, middle - side + 1), std::min(width, middle + side)};
}

// The given part of cv::getStructuringElement(cv::MORPH_ELLIPSE, {width, width}), without making the whole.
cv::Mat PartOfDisc(int width, const cv::Range& rows, const cv::Range& columns) {
  const int radius = width / 2;
  const double inverse_square = 1.0 / (static_cast<double>(radius) * radius);
  cv::Mat disc = cv::Mat::zeros(rows.size(), columns.size(), CV_8UC1);
  for (int row = rows.start; row < rows.end; ++row) {
    const int dy = row - radius;
    const int dx = cvRound(radius * std::sqrt((radius * radius - dy * dy) * inverse_square));  // as OpenCV rounds
    const cv::Range inside = cv::Range(radius - dx, radius + dx + 1) & columns;
    disc.row(row - rows.start).colRange(inside.start - columns.start, inside.end - columns.start).setTo(1);
  }
  return disc;
}

// Widens what is set in `mask` by a disc of `width` cells, of which only the part is made that can matter on the mask.
void WidenByDisc(cv::Mat& mask, int width) {
  const cv::Range rows = RowsThatMatter(width, mask.rows);
  const cv::Range columns = RowsThatMatter(width, mask.cols);
  const bool is_whole = rows.size() == width && columns.size() == width;
  const cv::Mat disc = is_whole ? cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(width, width))
                                : PartOfDisc(width, rows, columns);
  const cv::Point middle(width / 2 - columns.start, width / 2 - rows.start);
  cv::dilate(mask, mask, disc, middle, 1, cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
}

std::vector<cv::Point> Relative(std::vector<cv::Point> points, const cv::Point& origin) {
  for (cv::Point& point : points) {
    point -= origin;
  }
  return points;
}

}  // namespace

PathMapFiller::PathMapFiller(int path_width)
    : path_width_(path_width),
      publisher_(ros::NodeHandle().advertise<nav_msgs::OccupancyGrid>(kCorridorTopic, kCorridorQueueSize, kLatched)) {}

// A copied cv::Mat would share its cells.
PathMapFiller::PathMapFiller(const PathMapFiller& other)
    : grid_(other.grid_.clone()),
      path_width_(other.path_width_),
      publisher_(other.publisher_),
      corridor_value_(other.corridor_value_),
      marked_(other.marked_) {}

PathMapFiller& PathMapFiller::operator=(const PathMapFiller& other) {
  PathMapFiller copy(other);
  *this = std::move(copy);
  return *this;
}

void PathMapFiller::prepare(int width, const costmap_2d::Costmap2D* costmap, const nav_msgs::Path& path) {
  ClearGrid(cv::Size(static_cast<int>(costmap->getSizeInCellsX()), static_cast<int>(costmap->getSizeInCellsY())));
  const std::vector<cv::Point> cells = CellsOnMap(*costmap, path);
  path_width_ = width;
  marked_ = ReachOfCorridor(grid_.size(), cells, width);
  FillPathWidth(grid_, cells, width);
  PublishGridMap(costmap);
}

void PathMapFiller::FillPathWidth(cv::Mat& grid, const std::vector<cv::Point>& points, int width) const {
  constexpr bool kClosed = false;
  const cv::Rect reach = ReachOfCorridor(grid.size(), points, width);
  cv::Mat mask = cv::Mat::zeros(reach.size(), CV_8UC1);
  cv::polylines(mask, Relative(points, reach.tl()), kClosed, cv::Scalar(255), width, cv::LINE_8);
  WidenByDisc(mask, width);
  grid(reach).setTo(corridor_value_, mask);
}

// A matrix of the right size is kept and only its last corridor cleared, which takes no longer on a larger map.
void PathMapFiller::ClearGrid(const cv::Size& size) {
  if (grid_.size() == size) {
    grid_(marked_).setTo(kOutside);
  } else {
    grid_ = cv::Mat(size, CV_8UC1, cv::Scalar(kOutside));
  }
  marked_ = cv::Rect();
}

nav_msgs::OccupancyGrid PathMapFiller::getOccupancyGrid(const costmap_2d::Costmap2D* costmap) const {
  nav_msgs::OccupancyGrid message;
  message.header.frame_id = "map";
  message.header.stamp = ros::Time::now();
  message.info.resolution = static_cast<float>(costmap->getResolution());
  message.info.width = static_cast<std::uint32_t>(grid_.cols);
  message.info.height = static_cast<std::uint32_t>(grid_.rows);
  message.info.origin.position.x = costmap->getOriginX();
  message.info.origin.position.y = costmap->getOriginY();
  message.data.resize(grid_.total());
  std::transform(grid_.datastart, grid_.dataend, message.data.begin(),
                 [this](std::uint8_t cell) { return cell == corridor_value_ ? kOccupancyFree : kOccupancyOccupied; });
  return message;
}

void PathMapFiller::PublishGridMap(const costmap_2d::Costmap2D* costmap) {
  publisher_.publish(getOccupancyGrid(costmap));
}

}  // namespace nav_controller
