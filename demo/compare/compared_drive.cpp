#include "demo/compare/compared_drive.h"

#include <cstddef>
#include <cstdlib>

#include "demo/output/drive_files.h"
#include "follower/format.h"

namespace controller_base::demo {
namespace {

constexpr char kHeader[] =
    "map,seed,planner,outcome,path_m,time_s,driven_m,touched_seen,touched_hidden,closest_m,processor_s,late_cycles,"
    "speed,reason";
constexpr std::size_t kCells = 14;

// The cells of a line; quotes may stand around one, with a quote within doubled.
std::vector<std::string> Cells(const std::string& line) {
  std::vector<std::string> cells(1);
  bool is_quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == ',' && !is_quoted) {
      cells.emplace_back();
    } else if (line[i] != '"') {
      cells.back() += line[i];
    } else if (is_quoted && i + 1 < line.size() && line[i + 1] == '"') {
      cells.back() += line[i++];
    } else {
      is_quoted = !is_quoted;
    }
  }
  return cells;
}

double Number(const std::string& cell) {
  char* end = nullptr;
  const double number = std::strtod(cell.c_str(), &end);
  if (cell.empty() || *end != '\0') {
    throw ComparedDrivesError("'" + cell + "' is no number");
  }
  return number;
}

ComparedDrive DriveOf(const std::vector<std::string>& cells) {
  ComparedDrive drive;
  drive.map = cells[0];
  drive.seed = static_cast<std::uint32_t>(Number(cells[1]));
  drive.planner = cells[2];
  drive.outcome = cells[3];
  drive.path = Number(cells[4]);
  drive.time = Number(cells[5]);
  drive.driven = Number(cells[6]);
  drive.touched_seen = static_cast<int>(Number(cells[7]));
  drive.touched_hidden = static_cast<int>(Number(cells[8]));
  drive.closest = Number(cells[9]);
  drive.processor_seconds = Number(cells[10]);
  drive.late_cycles = static_cast<int>(Number(cells[11]));
  drive.speed = Number(cells[12]);
  drive.reason = cells[13];
  return drive;
}

}  // namespace

void WriteComparedHeader(std::ostream& out) { out << kHeader << '\n'; }

void WriteCompared(const ComparedDrive& drive, std::ostream& out) {
  out << drive.map
      << follower::Format(",%u,%s,%s,%.3f,%.2f,%.3f,%d,%d,%.3f,%.2f,%d,%g,", drive.seed, drive.planner.c_str(),
                          drive.outcome.c_str(), drive.path, drive.time, drive.driven, drive.touched_seen,
                          drive.touched_hidden, drive.closest, drive.processor_seconds, drive.late_cycles, drive.speed)
      << CsvText(drive.reason) << '\n';
}

std::vector<ComparedDrive> ReadCompared(std::istream& in) {
  std::string line;
  if (!std::getline(in, line) || line != kHeader) {
    throw ComparedDrivesError("not a table of compared drives: its first line is another one");
  }
  std::vector<ComparedDrive> drives;
  for (int number = 2; std::getline(in, line) && !in.eof(); ++number) {
    const std::vector<std::string> cells = Cells(line);
    if (cells.size() != kCells) {
      throw ComparedDrivesError(follower::Format("line %d has %zu cells, not %zu", number, cells.size(), kCells));
    }
    drives.push_back(DriveOf(cells));
  }
  return drives;
}

}  // namespace controller_base::demo
