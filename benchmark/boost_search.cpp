#include "benchmark/boost_search.h"

#include <algorithm>
#include <boost/graph/astar_search.hpp>
#include <boost/graph/graph_traits.hpp>
#include <boost/iterator/iterator_facade.hpp>
#include <boost/property_map/property_map.hpp>
#include <cstdlib>
#include <functional>
#include <limits>
#include <utility>

namespace controller_base_benchmark {
namespace {

constexpr std::uint32_t kStraight = 70;
constexpr std::uint32_t kDiagonal = 99;
constexpr std::uint32_t kExtraUnit = 7;
constexpr std::uint32_t kUnreached = std::numeric_limits<std::uint32_t>::max();
constexpr unsigned int kFirstDiagonal = 4;  // moves 0 .. 3 are straight

// The moves, as steps from vertex to vertex: left, right, down, up, then the diagonals in the same order.
struct Moves {
  explicit Moves(std::uint32_t stride)
      : step{0U - 1, 1, 0U - stride, stride, 0U - stride - 1, 0U - stride + 1, stride - 1, stride + 1} {}
  std::uint32_t step[8];  // modulo 2^32
};

struct GridGraph {
  Moves moves;
  const std::uint8_t* passable;
};

struct GridEdge {
  std::uint32_t source;
  std::uint32_t target;
  bool diagonal;

  bool operator==(const GridEdge& other) const { return source == other.source && target == other.target; }
  bool operator!=(const GridEdge& other) const { return !(*this == other); }
};

class OutEdgeIterator
    : public boost::iterator_facade<OutEdgeIterator, GridEdge, boost::forward_traversal_tag, GridEdge> {
 public:
  OutEdgeIterator() = default;
  OutEdgeIterator(const GridGraph& graph, std::uint32_t source, unsigned int legal)
      : graph_(&graph), source_(source), legal_(legal) {}

 private:
  friend class boost::iterator_core_access;

  void increment() { legal_ &= legal_ - 1; }
  bool equal(const OutEdgeIterator& other) const { return legal_ == other.legal_; }
  GridEdge dereference() const {
    const auto move = static_cast<unsigned int>(__builtin_ctz(legal_));
    return {source_, source_ + graph_->moves.step[move], move >= kFirstDiagonal};
  }

  const GridGraph* graph_ = nullptr;
  std::uint32_t source_ = 0;
  unsigned int legal_ = 0;  // a bit for each legal move that is still to come
};

// A bit for each legal move from `vertex`: a diagonal one needs both cells beside it.
unsigned int LegalMoves(const GridGraph& graph, std::uint32_t vertex) {
  const auto open = [&](unsigned int move) -> unsigned int { return graph.passable[vertex + graph.moves.step[move]]; };
  const unsigned int left = open(0);
  const unsigned int right = open(1);
  const unsigned int down = open(2);
  const unsigned int up = open(3);
  return left | right << 1 | down << 2 | up << 3 | (left & down & open(4)) << 4 | (right & down & open(5)) << 5 |
         (left & up & open(6)) << 6 | (right & up & open(7)) << 7;
}

// The functions and traits by which Boost.Graph knows a graph.
std::uint32_t source(const GridEdge& edge, const GridGraph&) { return edge.source; }
std::uint32_t target(const GridEdge& edge, const GridGraph&) { return edge.target; }
std::pair<OutEdgeIterator, OutEdgeIterator> out_edges(std::uint32_t vertex, const GridGraph& graph) {
  return {OutEdgeIterator(graph, vertex, LegalMoves(graph, vertex)), OutEdgeIterator(graph, vertex, 0)};
}
std::size_t out_degree(std::uint32_t vertex, const GridGraph& graph) {
  return static_cast<std::size_t>(__builtin_popcount(LegalMoves(graph, vertex)));
}

struct EdgeCost {
  using key_type = GridEdge;
  using value_type = std::uint32_t;
  using reference = std::uint32_t;
  using category = boost::readable_property_map_tag;

  const std::uint16_t* extra;
};

std::uint32_t get(const EdgeCost& costs, const GridEdge& edge) {
  return (edge.diagonal ? kDiagonal : kStraight) + kExtraUnit * costs.extra[edge.target];
}

class OctileHeuristic {
 public:
  OctileHeuristic(std::uint32_t stride, std::uint32_t goal)
      : stride_(stride), goal_x_(static_cast<int>(goal % stride)), goal_y_(static_cast<int>(goal / stride)) {}

  std::uint32_t operator()(std::uint32_t vertex) const {
    const auto dx = static_cast<std::uint32_t>(std::abs(static_cast<int>(vertex % stride_) - goal_x_));
    const auto dy = static_cast<std::uint32_t>(std::abs(static_cast<int>(vertex / stride_) - goal_y_));
    return kStraight * (dx + dy) - (2 * kStraight - kDiagonal) * std::min(dx, dy);
  }

 private:
  std::uint32_t stride_;
  int goal_x_;
  int goal_y_;
};

// Thrown to leave the search: Boost.Graph knows no other way to stop at the goal.
struct GoalReached {};

class QueryVisitor : public boost::default_astar_visitor {
 public:
  QueryVisitor(std::uint32_t goal, std::vector<std::uint32_t>& reached, std::size_t& expanded)
      : goal_(goal), reached_(&reached), expanded_(&expanded) {}

  void discover_vertex(std::uint32_t vertex, const GridGraph&) { reached_->push_back(vertex); }
  void examine_vertex(std::uint32_t vertex, const GridGraph&) {
    ++*expanded_;
    if (vertex == goal_) {
      throw GoalReached();
    }
  }

 private:
  std::uint32_t goal_;
  std::vector<std::uint32_t>* reached_;
  std::size_t* expanded_;
};

template <typename Value>
auto MapOver(std::vector<Value>& values) {
  return boost::make_iterator_property_map(values.begin(), boost::typed_identity_property_map<std::uint32_t>());
}

}  // namespace
}  // namespace controller_base_benchmark

template <>
struct boost::graph_traits<controller_base_benchmark::GridGraph> {
  using vertex_descriptor = std::uint32_t;
  using edge_descriptor = controller_base_benchmark::GridEdge;
  using out_edge_iterator = controller_base_benchmark::OutEdgeIterator;
  using directed_category = boost::directed_tag;
  using edge_parallel_category = boost::disallow_parallel_edge_tag;
  using traversal_category = boost::incidence_graph_tag;
  using degree_size_type = std::size_t;
};

namespace controller_base_benchmark {

BoostSearch::BoostSearch(const GridMap& map) : stride_(std::uint32_t{map.width} + 2) {
  const std::size_t vertices = std::size_t{stride_} * (std::size_t{map.height} + 2);
  passable_.resize(vertices, 0);
  extra_.resize(vertices, 0);
  for (std::uint16_t y = 0; y < map.height; ++y) {
    for (std::uint16_t x = 0; x < map.width; ++x) {
      const AStar::Vec2 cell{x, y};
      passable_[VertexOf(cell)] = map.passable[map.IndexOf(cell)];
      extra_[VertexOf(cell)] = map.extra.empty() ? std::uint16_t{0} : map.extra[map.IndexOf(cell)];
    }
  }
  distance_.resize(vertices, kUnreached);
  rank_.resize(vertices, kUnreached);
  predecessor_.resize(vertices, 0);
  color_.resize(vertices, boost::white_color);
}

BoostSearch::Result BoostSearch::Find(const Query& query) {
  const std::uint32_t start = VertexOf(query.start);
  const std::uint32_t goal = VertexOf(query.goal);
  Result result;
  if (passable_[start] == 0 || passable_[goal] == 0) {
    return result;
  }
  const GridGraph graph{Moves(stride_), passable_.data()};
  const OctileHeuristic heuristic(stride_, goal);
  distance_[start] = 0;
  rank_[start] = heuristic(start);
  try {
    boost::astar_search_no_init(graph, start, heuristic, QueryVisitor(goal, reached_, result.expanded),
                                MapOver(predecessor_), MapOver(rank_), MapOver(distance_), EdgeCost{extra_.data()},
                                MapOver(color_), boost::typed_identity_property_map<std::uint32_t>(), std::less<>(),
                                std::plus<>(), kUnreached, std::uint32_t{0});
  } catch (const GoalReached&) {
    result.cost = distance_[goal];
    for (std::uint32_t vertex = goal; vertex != start; vertex = predecessor_[vertex]) {
      result.cells.push_back(CellOf(vertex));
    }
    result.cells.push_back(query.start);
    std::reverse(result.cells.begin(), result.cells.end());
  }
  for (const std::uint32_t vertex : reached_) {
    distance_[vertex] = kUnreached;
    color_[vertex] = boost::white_color;
  }
  reached_.clear();
  return result;
}

AStar::Vec2 BoostSearch::CellOf(std::uint32_t vertex) const {
  return {static_cast<std::uint16_t>(vertex % stride_ - 1), static_cast<std::uint16_t>(vertex / stride_ - 1)};
}

}  // namespace controller_base_benchmark
