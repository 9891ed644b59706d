// Compares the follower's plugin with the stock DWA planner in the stock navigation stack. compare_usage.txt is its
// manual.

#include <ros/init.h>
#include <ros/node_handle.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "demo/compare/compared_drive.h"
#include "demo/compare/comparison_page.h"
#include "demo/compare/scene.h"
#include "demo/compare/stack.h"
#include "demo/output/output_folder.h"
#include "demo/programs/command_line.h"
#include "demo/programs/compare_usage.h"
#include "demo/programs/process.h"
#include "demo/programs/program.h"
#include "demo/runs/many_runs.h"
#include "demo/runs/random_runs.h"
#include "demo/terminal/say.h"
#include "follower/format.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;

constexpr char kProgram[] = "controller_base_compare";
constexpr char kPageBeginning[] = "<!-- made by scripts/compare -->\n";

struct CompareOptions {
  std::uint32_t scenes = 60;
  std::uint32_t seed = kFirstSeed;
  double speed = 1.0;
  std::string maps;
  fs::path out = "compare-out";
  bool help = false;
};

double ParseSpeed(const std::string& text) {
  char* end = nullptr;
  const double speed = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0' || !(speed >= 0.1 && speed <= 20.0)) {
    throw OptionError("--speed wants a number from 0.1 to 20, not '" + text + "'");
  }
  return speed;
}

CompareOptions Parse(const std::vector<std::string>& arguments) {
  using Text = const std::string&;
  CompareOptions options;
  options.help = !ReadOptions(
      arguments, {{"--scenes", [&](Text value) { options.scenes = ParseCount("--scenes", value, 1, 10'000); }},
                  {"--seed", [&](Text value) { options.seed = ParseCount("--seed", value, 0, 1'000'000'000); }},
                  {"--speed", [&](Text value) { options.speed = ParseSpeed(value); }},
                  {"--maps", [&](Text value) { options.maps = ParseName("--maps", value, "a folder"); }},
                  {"--out", [&](Text value) { options.out = ParseName("--out", value, "a folder"); }}});
  return options;
}

std::vector<std::string> MapFiles(const std::string& folder) {
  std::vector<std::string> files{CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml"};
  for (const char* name : {"depot.yaml", "ipa-kitchen.yaml"}) {
    const fs::path file = fs::path(folder) / name;
    if (!folder.empty() && fs::exists(file)) {
      files.push_back(file.string());
    } else {
      Say(stdout, "Left out: " + file.string() + " is absent");
    }
  }
  return files;
}

// What was driven before.
std::vector<ComparedDrive> ReadTable(const fs::path& file) {
  std::ifstream in(file);
  try {
    return in ? ReadCompared(in) : std::vector<ComparedDrive>();
  } catch (const ComparedDrivesError& error) {
    throw ComparedDrivesError(file.string() + ": " + error.what());
  }
}

// Whole lines alone: replaced in one step, so that an interruption leaves the old table or the new one.
void Replace(const fs::path& file, const std::string& text) {
  const fs::path partial = file.string() + ".partial";
  std::ofstream out(partial);
  out << text;
  out.close();
  std::error_code error;
  fs::rename(partial, file, error);
  if (!out || error) {
    throw OutputError("cannot write " + file.string());
  }
}

void CheckPage(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  if (in && std::getline(in, line) && line + "\n" != kPageBeginning) {
    throw OutputError("cannot write " + file.string() + ": another file has this name");
  }
}

void Keep(const std::vector<ComparedDrive>& drives, const fs::path& folder) {
  std::ostringstream table;
  WriteComparedHeader(table);
  for (const ComparedDrive& drive : drives) {
    WriteCompared(drive, table);
  }
  Replace(folder / "drives.csv", table.str());
  Replace(folder / "compared.md", kPageBeginning + ComparisonPage(drives));
}

bool IsDriven(const std::vector<ComparedDrive>& drives, const SceneName& scene, const std::string& planner) {
  return std::any_of(drives.begin(), drives.end(), [&](const ComparedDrive& drive) {
    return drive.map == scene.Map() && drive.seed == scene.seed && drive.planner == planner;
  });
}

std::string LineOf(const ComparedDrive& drive) {
  return follower::Format(
      "%-12s %6u  %-6s  %-8s  %6.1f s  %5.1f m  touched %d seen, %d hidden  closest %.2f m  %5.1f s of processor  %s",
      drive.map.c_str(), drive.seed, drive.planner.c_str(), drive.outcome.c_str(), drive.time, drive.driven,
      drive.touched_seen, drive.touched_hidden, drive.closest, drive.processor_seconds, drive.reason.c_str());
}

void DriveAll(const CompareOptions& options, const std::vector<SceneName>& scenes, std::vector<ComparedDrive>* drives) {
  const StackOptions stack{CONTROLLER_BASE_MOVE_BASE_CONFIGURATION, (options.out / "logs").string(), options.speed};
  for (const SceneName& name : scenes) {
    for (const std::string planner : {"plugin", "dwa"}) {
      if (IsDriven(*drives, name, planner)) {
        continue;
      }
      drives->push_back(DriveWithStack(DrawScene(name), planner, stack, [] { return StopRequested().load(); }));
      Say(stdout, LineOf(drives->back()));
      Keep(*drives, options.out);
    }
  }
}

int RunCompare(const CompareOptions& options) {
  const std::vector<SceneName> scenes = SceneNames(MapFiles(options.maps), options.scenes, options.seed);
  std::vector<ComparedDrive> drives = ReadTable(options.out / "drives.csv");
  CheckPage(options.out / "compared.md");
  std::error_code error;
  fs::create_directories(options.out / "logs", error);
  if (error) {
    throw OutputError("cannot make the folder " + options.out.string() + ": " + error.message());
  }
  const std::unique_ptr<ros_master::RosMasterProcess> master = MasterForRuns(EndIfAsked);
  ros::init(ros::M_string(), "controller_base_compare",
            ros::init_options::NoSigintHandler | ros::init_options::NoRosout);
  const ros::NodeHandle node;
  DriveAll(options, scenes, &drives);
  std::printf("\n%s", ComparisonPage(drives).c_str());
  Say(stdout, "Table: " + (options.out / "drives.csv").string());
  return EXIT_SUCCESS;
}

int Main(const Arguments& arguments) {
  const CompareOptions options = Parse(arguments);
  if (options.help) {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  RequireOpenFiles();
  return RunCompare(options);
}

}  // namespace
}  // namespace controller_base::demo

int main(int argc, char** argv) {
  using namespace controller_base::demo;  // NOLINT(google-build-using-namespace): this is its main program
  return RunProgram(kProgram, argc, argv, Main, DescribeDriveFailure);
}
