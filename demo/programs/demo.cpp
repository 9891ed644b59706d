// The demo program: drives one scenario, tells what happens, and leaves files and pictures. demo_usage.txt is its
// manual.

#include <ros/ros.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "demo/judge/verdict.h"
#include "demo/output/drive_files.h"
#include "demo/output/output_folder.h"
#include "demo/output/own_file.h"
#include "demo/output/picture_mark.h"
#include "demo/pictures/pictures.h"
#include "demo/pictures/story.h"
#include "demo/programs/demo_usage.h"
#include "demo/programs/exit_status.h"
#include "demo/programs/log_folder.h"
#include "demo/programs/master_watch.h"
#include "demo/programs/options.h"
#include "demo/programs/process.h"
#include "demo/programs/program.h"
#include "demo/programs/runs_command.h"
#include "demo/replay/bag_recorder.h"
#include "demo/runs/random_world.h"
#include "demo/scenario/scenario_file.h"
#include "demo/terminal/log_lines.h"
#include "demo/terminal/progress_line.h"
#include "demo/terminal/say.h"
#include "demo/terminal/status_line.h"
#include "demo/watch/drive_publisher.h"
#include "demo/watch/live_drive.h"
#include "ros_master/loopback_calls.h"
#include "ros_master/ros_master_process.h"
#include "simulation/closed_loop.h"
#include "simulation/drive_plan.h"
#include "simulation/map_file.h"
#include "simulation/progress.h"

namespace ros::console {
// Exported, but declared in no header; some versions of rosconsole do not have it.
extern bool g_color __attribute__((weak));
}  // namespace ros::console

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;

constexpr char kProgram[] = "controller_base_demo";
constexpr char kOwnScenario[] = CONTROLLER_BASE_DEMO_SCENARIOS "/apartment.yaml";

std::string MapFile(const Options& options) {
  return options.map_file.empty() ? LoadScenario(kOwnScenario).setup.map_file : options.map_file;
}

Scenario NamedScenario(const Options& options, const simulation::Progress& progress) {
  if (options.seed) {
    const costmap_2d::Costmap2D map = simulation::LoadMap(MapFile(options), progress);
    return {RandomWorlds(MapFile(options), map, options.conditions.value_or(kUsualConditions), progress)
                .Draw(*options.seed)
                .setup,
            {}};
  }
  if (!options.scenario_file.empty()) {
    return LoadScenario(options.scenario_file);
  }
  Scenario scenario = LoadScenario(kOwnScenario);
  scenario.expectation = {};  // the drive is judged by itself
  if (!options.map_file.empty()) {
    scenario.setup.map_file = options.map_file;
    scenario.setup.obstacles.clear();
  }
  scenario.places = {};
  scenario.setup.start = options.start.value_or(scenario.setup.start);
  scenario.setup.goal = options.goal.value_or(scenario.setup.goal);
  scenario.setup.replanning = true;
  return scenario;
}

Scenario ToScenario(const Options& options, const simulation::Progress& progress) {
  Scenario scenario = NamedScenario(options, progress);
  scenario.setup.replanning = scenario.setup.replanning && !options.no_replanning;
  return scenario;
}

// What is wrong with a value of a scenario, with the value's place in front.
std::string At(const std::string& place, const char* what) { return place.empty() ? what : place + ": " + what; }

costmap_2d::Costmap2D LoadMapOf(const Scenario& scenario, const simulation::Progress& progress) {
  try {
    return simulation::LoadMap(scenario.setup.map_file, progress);
  } catch (const simulation::MapError& error) {
    throw simulation::MapError(At(scenario.places.map, error.what()));
  }
}

// Where the value stands that makes a drive impossible.
std::string PlaceOf(const simulation::DriveError& error, const ScenarioPlaces& places) {
  if (error.way_point() && *error.way_point() < places.way_points.size()) {
    return places.way_points[*error.way_point()];
  }
  switch (error.problem()) {
    case simulation::DriveProblem::kMap:
      return places.map;
    case simulation::DriveProblem::kStart:
      return places.start;
    case simulation::DriveProblem::kGoal:
    case simulation::DriveProblem::kUnreachable:
      break;
  }
  return places.goal;
}

nav_msgs::Path PlanDriveOf(const Scenario& scenario, const costmap_2d::Costmap2D& map,
                           const simulation::Progress& progress) {
  try {
    return simulation::PlanDrive(map, scenario.setup, progress);
  } catch (const simulation::DriveError& error) {
    throw simulation::DriveError(error.problem(), At(PlaceOf(error, scenario.places), error.what()));
  }
}

// A ROS master for this process: nothing when one answers already, and leaves the clock to this process if that wants
// it.
std::unique_ptr<ros_master::RosMasterProcess> EnsureMaster(bool wants_clock) {
  const std::string uri = ros_master::MasterUriFromEnvironment();
  const bool answers = ros_master::MasterAnswers(uri);
  if (answers && !(wants_clock && ros_master::MasterHasClock(uri))) {
    setenv("ROS_MASTER_URI", uri.c_str(), 1);
    Say(stdout, "ROS master: " + uri);
    return nullptr;
  }
  std::unique_ptr<ros_master::RosMasterProcess> master = ros_master::RosMasterProcess::StartOnFreePort(EndIfAsked);
  master->ServeThisProcess();
  Say(stdout, std::string("ROS master: ") + (answers ? "another clock is in use at " : "none answers at ") + uri +
                  ", started one at " + master->Uri());
  return master;
}

// The clock of this process is the simulation's: another clock on the topic /clock must not set it.
void InitializeRos(bool owns_clock) {
  ros::M_string remappings;
  if (!owns_clock) {
    remappings["/clock"] = "/controller_base_demo/clock";
  }
  ros::init(remappings, "controller_base_demo", ros::init_options::AnonymousName | ros::init_options::NoSigintHandler);
}

// Where log lines go: information to one, warnings to the other.
bool AreTerminals() { return isatty(STDOUT_FILENO) == 1 && isatty(STDERR_FILENO) == 1; }

// rosconsole reads NO_COLOR as it is loaded, and again when it is initialised.
void LogWithoutColours() {
  setenv("NO_COLOR", "1", 1);
  if (&ros::console::g_color != nullptr) {
    ros::console::g_color = false;
  }
}

// The library's own log lines stand between the events, which tell the time.
void IndentLogLines() {
  if (std::getenv("ROSCONSOLE_FORMAT") == nullptr) {
    ros::console::g_formatter.tokens_.clear();
    const std::string erase = AreTerminals() ? LiveLine::kEraseLine : "";
    ros::console::g_formatter.init((erase + "              library:   ${message}").c_str());
  }
}

constexpr int kSmallest = 9;  // of PNG's compression levels

template <typename Writer>
void WriteFile(const fs::path& file, const Writer& write) {
  std::ofstream out(file);
  write(out);
  out.close();
  if (!out) {
    throw OutputError("cannot write " + file.string());
  }
}

// Encoded in memory first: cv::imwrite does not notice when the end of a file cannot be written.
void WritePicture(const cv::Mat& picture, const fs::path& file) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(".png", picture, bytes, {cv::IMWRITE_PNG_COMPRESSION, kSmallest})) {
    throw OutputError("cannot draw " + file.string());
  }
  MarkAsOwn(&bytes);
  WriteFile(file, [&](std::ostream& out) {
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  });
}

bool IsPicture(const fs::path& file) {
  return IsOwnEventPicture(file) || file.filename() == "drive.png" || file.filename() == "plots.png";
}

void WritePictures(const costmap_2d::Costmap2D& map, const simulation::DriveRecord& drive, const Story& story,
                   const fs::path& folder) {
  EndIfAsked();
  WritePicture(DrawDrive(map, drive, story), folder / "drive.png");
  WritePicture(DrawPlots(drive, story), folder / "plots.png");
  for (std::size_t i = 0; i < story.moments().size(); ++i) {
    EndIfAsked();
    WritePicture(DrawMoment(drive, story, i),
                 folder / EventPictureName(i, Name(story.moments()[i].events.back().kind)));
  }
}

void WriteTexts(const simulation::DriveSetup& setup, const simulation::DriveRecord& drive, ExitStatus status,
                const fs::path& folder) {
  WriteFile(folder / "trajectory.csv", [&](std::ostream& out) { WriteTrajectory(drive, out); });
  WriteFile(folder / "events.csv", [&](std::ostream& out) { WriteEvents(drive, out); });
  WriteFile(folder / "result.json",
            [&](std::ostream& out) { WriteResult(setup, drive, static_cast<int>(status), out); });
}

ExitStatus Compare(const Expectation& expectation, const simulation::DriveRecord& drive) {
  const std::vector<std::string> unmet = Unmet(expectation, drive);
  for (const std::string& line : unmet) {
    Say(stdout, "Not as expected: " + line);
  }
  if (unmet.empty()) {
    Say(stdout, "As expected: " + Judge(drive).text);
  }
  return unmet.empty() ? ExitStatus::kReached : ExitStatus::kUnexpected;
}

// What a drive that was not interrupted leaves.
void Keep(const costmap_2d::Costmap2D& map, const Scenario& scenario, const simulation::DriveRecord& drive,
          const Story& story, OutputFolder* folder) {
  const auto write_texts = [&] { WriteTexts(scenario.setup, drive, StatusOf(Judge(drive).outcome), folder->Begin()); };
  write_texts();
  folder->Publish(IsPicture);  // whatever becomes of the pictures; none of an earlier drive stays beside
  write_texts();               // once more: another drive may have published its own in the meantime
  WritePictures(map, drive, story, folder->Continue());
  for (const std::string& name : folder->Publish(IsPicture)) {
    Say(stdout, "Left out, because another file has its name: " + (folder->path() / name).string());
  }
  Say(stdout, "Files and pictures: " + folder->path().string());
}

ExitStatus Tell(const Scenario& scenario, const simulation::DriveRecord& drive) {
  const Verdict verdict = Judge(drive);
  const ExitStatus status = StatusOf(verdict.outcome);
  if (scenario.expectation.outcome && status != ExitStatus::kInterrupted) {
    return Compare(scenario.expectation, drive);
  }
  Say(stdout, (status == ExitStatus::kReached ? "Reached: " : "Failed: ") + verdict.text);
  return status;
}

// What a drive leaves and says. All of it in OnEnd, before the publishers unregister: the ROS master may not answer any
// more.
class Conclusion : public simulation::DriveObserver {
 public:
  Conclusion(const Options& options, const Scenario& scenario, const costmap_2d::Costmap2D& map, OutputFolder* folder,
             MasterWatch* watch)
      : options_(options), scenario_(scenario), map_(map), folder_(folder), watch_(watch) {}

  // What the pictures are to show.
  Story* story() { return &story_; }
  ExitStatus status() const { return status_; }

  // All publishers are there.
  void OnPath(const nav_msgs::Path& /*path*/) override { watch_->Pause(); }

  void OnEnd(const simulation::DriveRecord& drive) override {
    const std::shared_ptr<void> at_end(nullptr,
                                       [this](void*) { watch_->ResumeForShutdown(static_cast<int>(status_)); });
    if (!options_.bag.empty() && !drive.trajectory.empty()) {
      Say(stdout, "Bag: " + options_.bag);
    }
    if (StatusOf(Judge(drive).outcome) != ExitStatus::kInterrupted) {
      Keep(map_, scenario_, drive, story_, folder_);
    }
    status_ = Tell(scenario_, drive);
  }

 private:
  const Options& options_;
  const Scenario& scenario_;
  const costmap_2d::Costmap2D& map_;
  OutputFolder* folder_;
  MasterWatch* watch_;
  Story story_;
  ExitStatus status_ = ExitStatus::kInternalError;
};

// Drives at the ROS master, shows it to whoever wants to see it, and records it where `recorder` is not null.
void Drive(const Options& options, const simulation::DriveSetup& setup, const costmap_2d::Costmap2D& map,
           const nav_msgs::Path& path, BagRecorder* recorder, Conclusion* conclusion, MasterWatch* watch) {
  DrivePublisher publisher(map);
  StatusLine status(stdout);
  std::vector<simulation::DriveObserver*> observers{conclusion->story(), &publisher, &status};
  if (recorder != nullptr) {
    observers.push_back(recorder);
  }
  std::unique_ptr<LiveDrive> live;
  if (options.realtime) {
    live = std::make_unique<LiveDrive>(!options.no_input);
    const std::vector<simulation::DriveObserver*> more = live->Observers();
    observers.insert(observers.end(), more.begin(), more.end());
  }
  if (options.rviz) {
    watch->Pause();
    live->OpenRviz(CONTROLLER_BASE_DEMO_RVIZ_CONFIG, publisher, [] { return StopRequested().load(); });
    watch->Resume();
  }
  observers.push_back(conclusion);
  RunDrive(map, setup, path, observers, StopRequested(), live ? live->interaction() : nullptr);
}

// The drive's files would replace it.
void CheckBagName(const fs::path& bag, const OutputFolder& folder) {
  std::error_code ignored;
  const fs::path place = fs::weakly_canonical(fs::absolute(bag, ignored).parent_path(), ignored);
  if (!bag.empty() && IsOwnFile(bag.filename().string()) && place == fs::weakly_canonical(folder.path(), ignored)) {
    throw OutputError("cannot write the bag " + bag.string() + ": a file of the drive has this name");
  }
}

ExitStatus DriveScenario(const Options& options) {
  const LogFolder logs;
  OutputFolder folder(options.out.empty() ? "demo-out" : options.out);
  CheckBagName(options.bag, folder);
  std::optional<ProgressLine> line(std::in_place, stdout, [] { return StopRequested().load(); });
  const simulation::Progress progress = [&](const std::string& step) { line->Tell(step); };
  const Scenario scenario = ToScenario(options, progress);
  const costmap_2d::Costmap2D map = LoadMapOf(scenario, progress);
  const nav_msgs::Path path = PlanDriveOf(scenario, map, progress);
  line.reset();
  auto recorder = options.bag.empty() ? nullptr : std::make_unique<BagRecorder>(options.bag, map);
  const std::unique_ptr<ros_master::RosMasterProcess> master = EnsureMaster(options.realtime);
  MasterWatch watch(kProgram, [&] {
    recorder.reset();
    folder.Discard();
    logs.Discard();
  });
  InitializeRos(options.realtime);
  IndentLogLines();
  MakeLogLinesPrintable();
  Conclusion conclusion(options, scenario, map, &folder, &watch);
  const ros::NodeHandle node;  // ROS ends with its last handle
  if (master) {
    ros_master::TakeCallsOnLoopbackAlone();
  }
  Drive(options, scenario.setup, map, path, recorder.get(), &conclusion, &watch);
  return conclusion.status();
}

int Main(const Arguments& arguments) {
  if (!AreTerminals()) {
    LogWithoutColours();
  }
  const Options options = ParseOptions(arguments);
  if (options.help) {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  RequireOpenFiles();
  if (options.runs > 0) {
    return static_cast<int>(DriveManyRuns(options, MapFile(options), [] { return StopRequested().load(); }));
  }
  return static_cast<int>(DriveScenario(options));
}

}  // namespace
}  // namespace controller_base::demo

int main(int argc, char** argv) {
  using namespace controller_base::demo;  // NOLINT(google-build-using-namespace): this is its main program
  return RunProgram(kProgram, argc, argv, Main, DescribeDriveFailure);
}
