#include "benchmark/grid_queries.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace controller_base_benchmark {
namespace {

namespace fs = std::filesystem;

// The detour planner's rule: 20 of extra cost for each step of the cost byte above 94; none for a byte above 127, which
// is negative, and none on the map's border.
constexpr int kFreeCost = 94;
constexpr int kHighestSignedCost = 127;
constexpr int kExtraPerCostStep = 20;

[[noreturn]] void Refuse(const fs::path& file, const std::string& why) {
  throw std::runtime_error(file.string() + ": " + why);
}

std::uint16_t ExtraCost(const GridMap& map, const AStar::Vec2& cell) {
  if (cell.x == 0 || cell.y == 0 || cell.x >= map.width - 1 || cell.y >= map.height - 1) {
    return 0;
  }
  const int cost = map.costs[map.IndexOf(cell)];
  const bool charged = cost > kFreeCost && cost <= kHighestSignedCost;
  return charged ? static_cast<std::uint16_t>((cost - kFreeCost) * kExtraPerCostStep) : std::uint16_t{0};
}

// A binary PGM whose first row is y = 0 and whose bytes are costs.
GridMap ReadCostMap(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::string magic;
  int highest = 0;
  GridMap map;
  map.name = file.stem().string();
  if (!(in >> magic >> map.width >> map.height >> highest) || magic != "P5" || highest != 255) {
    Refuse(file, "not a binary PGM of bytes");
  }
  in.get();
  map.costs.resize(std::size_t{map.width} * map.height);
  const auto size = static_cast<std::streamsize>(map.costs.size());
  if (!in.read(reinterpret_cast<char*>(map.costs.data()), size)) {
    Refuse(file, "too few bytes");
  }
  ApplyCosts(map);
  return map;
}

GridMap ReadOctileMap(const fs::path& file) {
  std::ifstream in(file);
  std::string word;
  GridMap map;
  map.name = file.stem().string();
  while (in >> word && word != "map") {
    if (word == "height") {
      in >> map.height;
    } else if (word == "width") {
      in >> map.width;
    }
  }
  std::string row;
  for (std::uint16_t y = 0; y < map.height; ++y) {
    if (!(in >> row) || row.size() != map.width) {
      Refuse(file, "a row is missing or has not the map's width");
    }
    for (const char cell : row) {
      map.passable.push_back(cell == '.' || cell == 'G' || cell == 'S');
    }
  }
  return map;
}

std::vector<Query> ReadQueries(const fs::path& file, const GridMap& map) {
  std::ifstream in(file);
  std::vector<Query> queries;
  std::string line;
  std::getline(in, line);  // the version
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string bucket;
    std::string name;
    int width = 0;
    int height = 0;
    Query query{};
    if (!(fields >> bucket >> name >> width >> height >> query.start.x >> query.start.y >> query.goal.x >>
          query.goal.y >> query.optimum)) {
      continue;
    }
    if (width != map.width || height != map.height) {
      Refuse(file, "made for a map of another size");
    }
    queries.push_back(query);
  }
  if (queries.empty()) {
    Refuse(file, "no queries");
  }
  return queries;
}

// The files of `folder` that end in `extension`, sorted by name.
std::vector<fs::path> FilesIn(const fs::path& folder, const std::string& extension) {
  std::vector<fs::path> files;
  if (fs::is_directory(folder)) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
      if (entry.path().extension() == extension) {
        files.push_back(entry.path());
      }
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

AStar::Params RequestOn(const GridMap& map, const Query& query) {
  AStar::Params request;
  request.allow_diagonal = true;
  request.width = map.width;
  request.height = map.height;
  request.start = query.start;
  request.goal = query.goal;
  request.is_passable = [&map](const AStar::Vec2& cell) { return map.passable[map.IndexOf(cell)] != 0; };
  if (!map.extra.empty()) {
    request.extra_cost = [&map](const AStar::Vec2& cell) { return map.extra[map.IndexOf(cell)]; };
  }
  return request;
}

void ApplyCosts(GridMap& map) {
  for (const unsigned char cost : map.costs) {
    map.passable.push_back(cost != costmap_2d::INSCRIBED_INFLATED_OBSTACLE && cost != costmap_2d::LETHAL_OBSTACLE);
  }
  for (std::uint16_t y = 0; y < map.height; ++y) {
    for (std::uint16_t x = 0; x < map.width; ++x) {
      map.extra.push_back(ExtraCost(map, {x, y}));
    }
  }
}

costmap_2d::Costmap2D CostmapOf(const GridMap& map) {
  costmap_2d::Costmap2D costmap(map.width, map.height, kLocalCell, 0.0, 0.0);
  for (std::uint16_t y = 0; y < map.height; ++y) {
    for (std::uint16_t x = 0; x < map.width; ++x) {
      costmap.setCost(x, y, map.costs[map.IndexOf({x, y})]);
    }
  }
  return costmap;
}

std::vector<GridMap> ReadLocalMaps(const std::string& folder) {
  std::vector<GridMap> maps;
  for (const fs::path& file : FilesIn(fs::path(folder) / "local", ".pgm")) {
    maps.push_back(ReadCostMap(file));
    maps.back().queries = ReadQueries(fs::path(file).replace_extension(".scen"), maps.back());
  }
  return maps;
}

std::vector<GridMap> ReadOctileMaps(const std::string& folder) {
  std::vector<GridMap> maps;
  for (const fs::path& file : FilesIn(fs::path(folder) / "movingai", ".map")) {
    maps.push_back(ReadOctileMap(file));
    maps.back().queries = ReadQueries(file.string() + ".scen", maps.back());
  }
  return maps;
}

}  // namespace controller_base_benchmark
