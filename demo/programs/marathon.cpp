// The marathon: random worlds until 42.2 km are driven on the bundled map, and a part of that on each further map.
// marathon_usage.txt is its manual.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "demo/output/long_file.h"
#include "demo/output/output_folder.h"
#include "demo/programs/command_line.h"
#include "demo/programs/exit_status.h"
#include "demo/programs/log_folder.h"
#include "demo/programs/marathon_usage.h"
#include "demo/programs/process.h"
#include "demo/programs/program.h"
#include "demo/runs/many_runs.h"
#include "demo/runs/marathon_report.h"
#include "demo/runs/random_runs.h"
#include "demo/runs/random_world.h"
#include "demo/runs/run_table.h"
#include "demo/terminal/live_line.h"
#include "demo/terminal/progress_line.h"
#include "demo/terminal/say.h"
#include "simulation/map_file.h"
#include "simulation/progress.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;

constexpr char kProgram[] = "controller_base_marathon";
constexpr double kMetresPerKm = 1000.0;
constexpr double kShareOfOtherMaps = 0.05;  // of the kilometres and worlds of the bundled map

struct MarathonOptions {
  double km = 42.2;
  std::uint32_t worlds = 300;
  std::uint32_t seed = kFirstSeed;
  std::size_t jobs = 0;  // 0: as many as there are processors
  simulation::Conditions conditions = kUsualConditions;
  std::string maps;  // a folder; empty: the bundled map alone
  std::string out = "marathon-out";
  bool help = false;
};

double ParseKilometres(const std::string& text) {
  char* end = nullptr;
  const double km = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0' || !(km > 0.0 && km <= 10'000.0)) {
    throw OptionError("--km wants a number above 0, at most 10000, not '" + text + "'");
  }
  return km;
}

MarathonOptions Parse(const std::vector<std::string>& arguments) {
  using Text = const std::string&;
  MarathonOptions options;
  options.help = !ReadOptions(
      arguments, {{"--km", [&](Text value) { options.km = ParseKilometres(value); }},
                  {"--worlds", [&](Text value) { options.worlds = ParseCount("--worlds", value, 1, kMostRuns); }},
                  {"--seed", [&](Text value) { options.seed = ParseCount("--seed", value, 0, kHighestSeed); }},
                  {"--jobs", [&](Text value) { options.jobs = ParseCount("--jobs", value, 1, kMostJobs); }},
                  {"--world", [&](Text value) { options.conditions = ParseConditions("--world", value); }},
                  {"--maps", [&](Text value) { options.maps = ParseName("--maps", value, "a folder"); }},
                  {"--out", [&](Text value) { options.out = ParseName("--out", value, "a folder"); }}});
  return options;
}

// The YAML files of a folder, by name; says so when there is no such folder.
std::vector<std::string> FurtherMaps(const std::string& folder) {
  std::vector<std::string> maps;
  if (folder.empty() || !fs::is_directory(folder)) {
    Say(stdout, "No further maps: " + (folder.empty() ? "no folder is named" : folder + " is absent"));
    return maps;
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == ".yaml") {
      maps.push_back(entry.path().string());
    }
  }
  std::sort(maps.begin(), maps.end());
  return maps;
}

// Processor seconds of all child processes that have ended.
double ChildrenSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// A map and what is to be driven on it.
struct Course {
  std::string map_file;
  double km;
  double worlds;
};

std::vector<Course> Courses(const MarathonOptions& options) {
  std::vector<Course> courses{
      {CONTROLLER_BASE_DEMO_MAPS "/apartment.yaml", options.km, static_cast<double>(options.worlds)}};
  for (const std::string& map_file : FurtherMaps(options.maps)) {
    courses.push_back({map_file, kShareOfOtherMaps * options.km, kShareOfOtherMaps * options.worlds});
  }
  return courses;
}

// Tells how far the loading of a map is, and ends it when a signal asks for that.
simulation::Progress Loading() {
  return [line = std::make_shared<ProgressLine>(stdout, [] { return StopRequested().load(); })](
             const std::string& step) { line->Tell(step); };
}

// A broken map is reported before the first drive, not hours later.
void CheckMaps(const std::vector<Course>& courses, std::uint32_t seed) {
  for (const Course& course : courses) {
    const simulation::Progress progress = Loading();
    const costmap_2d::Costmap2D map = simulation::LoadMap(course.map_file, progress);
    RandomWorlds(course.map_file, map, kUsualConditions, progress).Draw(seed, progress);
  }
}

std::string ProgressText(const MapReport& report, const Course& course) {
  constexpr std::size_t kBarWidth = 24;
  char text[160];
  std::snprintf(text, sizeof(text), "%s [%s] %.1f of %.1f km, %d runs, %d not clean", report.map.c_str(),
                ProgressBar(static_cast<std::size_t>(report.totals.driven),
                            static_cast<std::size_t>(kMetresPerKm * course.km), kBarWidth)
                    .c_str(),
                report.totals.driven / kMetresPerKm, course.km, report.totals.runs, report.totals.unclean);
  return text;
}

MapReport DriveCourse(const Course& course, const MarathonOptions& options, std::ostream* csv) {
  const auto beginning = std::chrono::steady_clock::now();
  const double seconds_before = ChildrenSeconds();
  MapReport report;
  report.map = fs::path(course.map_file).stem().string();
  LiveLine line(stdout);
  line.Print(report.map);
  const auto take = [&](const RunResult& run) {
    report.Add(run);
    if (!run.IsClean()) {
      line.Print(TableRow(run));
    }
    line.Show(ProgressText(report, course));
    return report.totals.runs < course.worlds || report.totals.driven < kMetresPerKm * course.km;
  };
  ManyRuns runs;
  runs.first_seed = options.seed;
  runs.jobs = JobsFor(options.jobs);
  runs.most_runs = kMostRuns;
  try {
    DriveRandomWorlds(
        course.map_file, options.conditions, runs, csv, take, [] { return StopRequested().load(); }, Loading());
  } catch (const simulation::Interrupted&) {
    // What was driven on the maps before is kept.
  }
  report.processor_seconds = ChildrenSeconds() - seconds_before;
  report.wall_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - beginning).count();
  return report;
}

void Close(std::list<LongFile>* files, const OutputFolder& folder) {
  bool is_remade = false;
  for (LongFile& file : *files) {
    is_remade = file.Close() || is_remade;
  }
  if (is_remade) {
    Say(stdout, folder.path().string() + " was removed meanwhile, and is made again");
  }
}

int RunMarathon(const MarathonOptions& options) {
  const LogFolder logs;
  OutputFolder folder(options.out);
  cv::setNumThreads(0);  // a process with threads cannot be copied
  const std::vector<Course> courses = Courses(options);
  CheckMaps(courses, options.seed);
  const std::unique_ptr<ros_master::RosMasterProcess> master = MasterForRuns(EndIfAsked);
  folder.Begin();
  std::vector<MapReport> reports;
  std::list<LongFile> tables;
  for (std::size_t i = 0; i < courses.size() && !StopRequested(); ++i) {
    // Numbered, because maps from two folders may have the same name.
    tables.emplace_back(&folder, std::to_string(i + 1) + "-" + fs::path(courses[i].map_file).stem().string() + ".csv");
    reports.push_back(DriveCourse(courses[i], options, &tables.back().stream()));
  }
  tables.emplace_back(&folder, "marathon.md").stream() << MarathonPage(options.conditions, reports);
  Close(&tables, folder);
  folder.Publish();
  std::printf("\n%s\n", MarathonPage(options.conditions, reports).c_str());
  Say(stdout, "Files: " + folder.path().string());
  if (StopRequested()) {
    return Complain(kProgram, {static_cast<int>(ExitStatus::kInterrupted), "interrupted"});
  }
  const bool is_clean =
      std::all_of(reports.begin(), reports.end(), [](const MapReport& report) { return report.totals.unclean == 0; });
  return is_clean ? EXIT_SUCCESS : EXIT_FAILURE;
}

int Main(const Arguments& arguments) {
  const MarathonOptions options = Parse(arguments);
  if (options.help) {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  RequireOpenFiles();
  return RunMarathon(options);
}

}  // namespace
}  // namespace controller_base::demo

int main(int argc, char** argv) {
  using namespace controller_base::demo;  // NOLINT(google-build-using-namespace): this is its main program
  return RunProgram(kProgram, argc, argv, Main, DescribeDriveFailure);
}
