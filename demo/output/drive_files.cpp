#include "demo/output/drive_files.h"

#include <algorithm>
#include <filesystem>

#include "demo/judge/verdict.h"
#include "follower/format.h"
#include "follower/path_geometry.h"

namespace controller_base::demo {
namespace {

std::string JsonText(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      quoted += follower::Format("\\u%04x", static_cast<unsigned int>(c));
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

}  // namespace

std::string CsvText(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    quoted += c == '"' ? "\"\"" : std::string(1, c);
  }
  return quoted + '"';
}

std::string EventLine(const follower::Event& event) {
  return follower::Format("%7.2f s  %-9s (%6.2f, %6.2f)  ", simulation::DriveTime(event.stamp), Name(event.kind),
                          event.position.x, event.position.y) +
         event.text;
}

void WriteTrajectory(const simulation::DriveRecord& drive, std::ostream& out) {
  out << "time_s,x_m,y_m,yaw_rad,speed_mps,turn_rate_radps,index,deviation_m,state\n";
  for (const simulation::TrajectorySample& sample : drive.trajectory) {
    out << follower::Format("%.2f,%.6f,%.6f,%.6f,%.6f,%.6f,%llu,%.6f,", sample.time, sample.pose.x, sample.pose.y,
                            sample.pose.yaw, sample.motion.speed, sample.motion.turn_rate,
                            static_cast<unsigned long long>(sample.index), sample.deviation)
        << sample.state << '\n';
  }
}

void WriteEvents(const simulation::DriveRecord& drive, std::ostream& out) {
  out << "time_s,kind,x_m,y_m,text\n";
  for (const follower::Event& event : drive.events) {
    out << follower::Format("%.2f,%s,%.6f,%.6f,", simulation::DriveTime(event.stamp), Name(event.kind),
                            event.position.x, event.position.y)
        << CsvText(event.text) << '\n';
  }
}

void WriteResult(const simulation::DriveSetup& setup, const simulation::DriveRecord& drive, int exit_status,
                 std::ostream& out) {
  const Verdict verdict = Judge(drive);
  const auto repaired = std::count_if(drive.detours.begin(), drive.detours.end(),
                                      [](const follower::DetourReport& detour) { return detour.goal_repaired; });
  out << "{\n"
      << "  \"reached\": " << (verdict.outcome == DriveOutcome::kReached ? "true" : "false") << ",\n"
      << "  \"exit_status\": " << exit_status << ",\n"
      << "  \"verdict\": " << JsonText(verdict.text) << ",\n"
      << "  \"map\": " << JsonText(std::filesystem::path(setup.map_file).filename().string()) << ",\n"
      << follower::Format("  \"start\": [%.6f, %.6f, %.6f],\n", setup.start.x, setup.start.y, setup.start.yaw)
      << follower::Format("  \"goal\": [%.6f, %.6f],\n", setup.goal.x, setup.goal.y)
      << follower::Format("  \"goal_distance_m\": %.6f,\n", drive.goal_distance)
      << follower::Format("  \"duration_s\": %.2f,\n", drive.trajectory.empty() ? 0.0 : drive.trajectory.back().time)
      << follower::Format("  \"path_length_m\": %.6f,\n", follower::PathLength(drive.path))
      << follower::Format("  \"driven_m\": %.6f,\n", drive.driven)  //
      << "  \"detours\": " << drive.detours.size() << ",\n"
      << "  \"repaired_goals\": " << repaired << ",\n"
      << "  \"contacts\": " << drive.contacts << ",\n"
      << "  \"touched_seen\": " << drive.touched_seen << ",\n"
      << "  \"virtual_boxes\": " << drive.boxes.size() << "\n"
      << "}\n";
}

}  // namespace controller_base::demo
