// The programs touch only their own files, whatever --out and --bag name and however the programs end.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "test/demo/programs/program_run.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using controller_base::demo::ChildProcess;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class OutputFiles : public ProgramRun {
 protected:
  // A drive that is interrupted while it runs, after `meanwhile` was called.
  Finished Interrupted(const std::string& arguments, const std::function<void()>& meanwhile) const {
    ChildProcess demo = Start("exec $DEMO --realtime " + arguments);
    EXPECT_TRUE(Prints("new path"));
    meanwhile();
    kill(demo.pid(), SIGINT);
    return Wait(&demo);
  }
};

const std::vector<std::string> kShortDrive = {"drive.png", "event-01-path.png", "event-02-arrival.png", "events.csv",
                                              "plots.png", "result.json",       "trajectory.csv"};

// The id of a process that has ended.
std::string EndedProcess() {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  return std::to_string(child);
}

TEST_F(OutputFiles, AnInterruptedDriveTakesItsFoldersAwayWhereTheyAreEmpty) {
  const Finished demo = Interrupted("--out A/B/C", [&] {
    Write("A/mine.txt", "mine");
    fs::create_directory(Path("A/B/theirs"));
  });
  EXPECT_EQ(demo.status, 130) << demo.output;
  EXPECT_EQ(Read("A/mine.txt"), "mine");
  EXPECT_THAT(Names("A/B"), ElementsAre("theirs"));
}

TEST_F(OutputFiles, AnInterruptedDriveLeavesNoFolderThatItMade) {
  EXPECT_EQ(Interrupted("--out A/B/C", [] {}).status, 130);
  EXPECT_THAT(Names(""), IsEmpty());
}

TEST_F(OutputFiles, FoldersThatWereThereStayAfterAnInterruption) {
  fs::create_directory(Path("A"));
  EXPECT_EQ(Interrupted("--out A/B", [] {}).status, 130);
  EXPECT_THAT(Names(""), ElementsAre("A"));
  EXPECT_THAT(Names("A"), IsEmpty());
}

TEST_F(OutputFiles, ABagInTheNewFolderOutlivesAnInterruption) {
  EXPECT_EQ(Interrupted("--out out --bag out/a.bag", [] {}).status, 130);
  EXPECT_THAT(Names("out"), ElementsAre("a.bag"));
}

TEST_F(OutputFiles, AFolderThatIsRemovedMeanwhileIsMadeAgain) {
  ChildProcess demo = Start("exec $DEMO --realtime $WAY --out A/B");
  ASSERT_TRUE(Prints("new path"));
  fs::remove_all(Path("A"));
  EXPECT_EQ(Wait(&demo).status, 0);
  EXPECT_THAT(Names("A/B"), ElementsAreArray(kShortDrive));
}

TEST_F(OutputFiles, TheTableOutlivesItsFolder) {
  for (const std::string program : {"$DEMO --runs 100000", "$MARATHON --worlds 100000"}) {
    ChildProcess runs = Start("exec " + program + " --jobs 1 --out A/B");
    ASSERT_TRUE(Until([&] { return fs::exists(Path("A/B/.partial-" + std::to_string(runs.pid()))); }));
    ASSERT_TRUE(Prints(program[1] == 'D' ? "reached" : "apartment\n"));
    fs::remove_all(Path("A"));
    kill(runs.pid(), SIGINT);
    const Finished finished = Wait(&runs);
    EXPECT_EQ(finished.status, 130) << finished.output;
    EXPECT_THAT(finished.output, HasSubstr("A/B was removed meanwhile, and is made again\n"));
    EXPECT_THAT(Read(program[1] == 'D' ? "A/B/runs.csv" : "A/B/1-apartment.csv"), testing::StartsWith("seed,outcome,"));
  }
}

TEST_F(OutputFiles, ANameThatIsEmptyIsSaid) {
  ExpectOneLine(Run("$DEMO $WAY --out ''"), 2, "controller_base_demo: --out wants the name of a folder");
  ExpectOneLine(Run("$DEMO $WAY --out="), 2, "--out wants the name of a folder");
  ExpectOneLine(Run("$DEMO --scenario ''"), 2, "--scenario wants the name of a file");
  ExpectOneLine(Run("$DEMO $WAY --map ''"), 2, "--map wants the name of a file");
  ExpectOneLine(Run("$DEMO $WAY --bag ''"), 2, "--bag wants the name of a file");
  ExpectOneLine(Run("$MARATHON --out ''"), 2, "controller_base_marathon: --out wants the name of a folder");
  ExpectOneLine(Run("$MARATHON --maps ''"), 2, "--maps wants the name of a folder");
  EXPECT_THAT(Names(""), IsEmpty());
}

TEST_F(OutputFiles, LinksThatLeadToNoFolderStay) {
  fs::create_directory(Path("P"));
  const std::map<std::string, std::string> links = {
      {"dangling", "nowhere/at/all"}, {"loop", "loop"}, {"full", "/dev/full"}, {"P/dangling", "../nowhere"}};
  for (const auto& [link, target] : links) {
    fs::create_symlink(target, Path(link));
  }
  ExpectOneLine(Run("$DEMO $WAY --out dangling"), 7, "dangling is a link that leads nowhere");
  ExpectOneLine(Run("$DEMO $WAY --out dangling/"), 7, "dangling is a link that leads nowhere");
  ExpectOneLine(Run("$DEMO $WAY --out loop"), 7, "loop is a link that leads nowhere");
  ExpectOneLine(Run("$DEMO $WAY --out full"), 7, "full is no folder");
  ExpectOneLine(Run("$DEMO $WAY --out P/dangling/out"), 7, "P/dangling is a link that leads nowhere");
  ExpectOneLine(Run("$DEMO --runs 1 --out dangling"), 7, "dangling is a link that leads nowhere");
  ExpectOneLine(Run("$MARATHON --km 0.001 --worlds 1 --out dangling"), 7, "dangling is a link that leads nowhere");
  for (const auto& [link, target] : links) {
    EXPECT_EQ(fs::read_symlink(Path(link)), target);
  }
  EXPECT_THAT(Names(""), ElementsAre("P", "dangling", "full", "loop"));
}

TEST_F(OutputFiles, ALinkToAFolderIsAFolder) {
  fs::create_directory(Path("real"));
  fs::create_symlink("real", Path("link"));
  EXPECT_EQ(Run("$DEMO $WAY --out link").status, 0);
  EXPECT_THAT(Names("real"), ElementsAreArray(kShortDrive));
  EXPECT_EQ(fs::read_symlink(Path("link")), "real");
}

TEST_F(OutputFiles, WhatIsNoFolderStays) {
  Write("file", "mine");
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  ExpectOneLine(Run("$DEMO $WAY --out file"), 7, "file is no folder");
  ExpectOneLine(Run("$DEMO $WAY --out file/sub"), 7, "file is no folder");
  ExpectOneLine(Run("$DEMO $WAY --out pipe"), 7, "pipe is no folder");
  ExpectOneLine(Run("$DEMO $WAY --out /dev/null"), 7, "/dev/null is no folder");
  ExpectOneLine(Run("$DEMO $WAY --out /proc"), 7, "cannot write into the folder /proc: ");
  EXPECT_EQ(Read("file"), "mine");
  EXPECT_TRUE(fs::is_fifo(Path("pipe")));
}

TEST_F(OutputFiles, OnlyPicturesThatTheDemoDrewAreRemoved) {
  ASSERT_EQ(Run("$DEMO $WAY --out out").status, 0);
  for (const char* name : {"event-02-detour.png", "event-09-no-path.png", "event-60-arrival.png"}) {
    fs::copy_file(Path("out/event-01-path.png"), Path("out") / name);  // of a longer drive
  }
  const std::vector<std::string> others = {"event-001-path.png", "event-01-PATH.png",   "event-01-mine.png",
                                           "event-01-path.jpeg", "event-1-path.png",    "event-01-path.png.bak",
                                           "event-photo.png",    "event-00-detour.png", "my-event-01-path.png",
                                           "event-03-detour.png"};
  for (const std::string& name : others) {
    Write("out/" + name, "mine");
  }
  fs::create_directory(Path("out/event-05-detour.png"));
  ASSERT_EQ(Run("$DEMO $WAY --out out").status, 0);
  std::vector<std::string> expected = kShortDrive;
  expected.insert(expected.end(), others.begin(), others.end());
  expected.push_back("event-05-detour.png");
  std::sort(expected.begin(), expected.end());
  EXPECT_THAT(Names("out"), ElementsAreArray(expected));
  for (const std::string& name : others) {
    EXPECT_EQ(Read("out/" + name), "mine") << name;
  }
}

TEST_F(OutputFiles, APictureOfSomebodyElsesKeepsItsName) {
  fs::create_directory(Path("out"));
  Write("out/event-01-path.png", "mine");
  Write("theirs.png", "theirs");
  fs::create_symlink("../theirs.png", Path("out/event-02-arrival.png"));
  const Finished demo = Run("$DEMO $WAY --out out");
  EXPECT_EQ(demo.status, 0);
  EXPECT_EQ(Read("out/event-01-path.png"), "mine");
  EXPECT_EQ(fs::read_symlink(Path("out/event-02-arrival.png")), "../theirs.png");
  for (const char* name : {"event-01-path.png", "event-02-arrival.png"}) {
    EXPECT_THAT(demo.output,
                HasSubstr("Left out, because another file has its name: " + Path("out").string() + "/" + name + "\n"));
  }
  EXPECT_THAT(Names("out"), ElementsAreArray(kShortDrive));
}

TEST_F(OutputFiles, ManyRunsKeepTheFilesOfADrive) {
  ASSERT_EQ(Run("$DEMO $WAY --out out").status, 0);
  ASSERT_EQ(Run("$DEMO --runs 1 --out out").status, 0);
  std::vector<std::string> expected = kShortDrive;
  expected.insert(expected.end() - 1, "runs.csv");
  EXPECT_THAT(Names("out"), ElementsAreArray(expected));
}

TEST_F(OutputFiles, AFolderOfAFilesNameIsSaidBeforeAnythingIsReplaced) {
  fs::create_directories(Path("out/result.json"));
  Write("out/drive.png", "of an earlier drive");
  Write("out/event-09-detour.png", "of an earlier drive");
  const Finished demo = Run("$DEMO $WAY --out out");
  EXPECT_EQ(demo.status, 7);
  EXPECT_THAT(demo.last_line, HasSubstr("result.json is a folder there"));
  EXPECT_THAT(Names("out"), ElementsAre("drive.png", "event-09-detour.png", "result.json"));
  EXPECT_EQ(Read("out/drive.png"), "of an earlier drive");
}

TEST_F(OutputFiles, ADiskThatIsFullLeavesNothingHalfWritten) {
  const Finished demo = Run("ulimit -f 1 && exec $DEMO $WAY --out new/out");
  EXPECT_EQ(demo.status, 7) << demo.output;
  EXPECT_THAT(demo.last_line, HasSubstr("controller_base_demo: cannot write "));
  EXPECT_THAT(Names(""), IsEmpty());
}

// The limit lies within the bytes that a picture's writer buffers until the end.
TEST_F(OutputFiles, APictureIsWholeOrAnError) {
  ASSERT_EQ(Run("$DEMO $WAY --out whole").status, 0);
  const auto size = std::max(fs::file_size(Path("whole/drive.png")), fs::file_size(Path("whole/plots.png")));
  const auto largest = std::max(
      {size, fs::file_size(Path("whole/event-01-path.png")), fs::file_size(Path("whole/event-02-arrival.png"))});
  const std::string blocks = std::to_string((largest - 1) / 1024);
  const Finished demo = Run("ulimit -f " + blocks + " && exec $DEMO $WAY --out out");
  EXPECT_EQ(demo.status, 7) << demo.output;
  EXPECT_THAT(Names("out"), ElementsAre("events.csv", "result.json", "trajectory.csv"));
}

TEST_F(OutputFiles, WhatAKilledRunLeftIsRemovedByTheNext) {
  ChildProcess runs = Start("exec $DEMO --runs 100000 --jobs 1 --out out");
  ASSERT_TRUE(Prints("reached"));
  kill(runs.pid(), SIGKILL);
  runs.WaitForEnd();
  ASSERT_THAT(Names("out"), ElementsAre(".partial-" + std::to_string(runs.pid())));
  ASSERT_EQ(Run("$DEMO $WAY --out out").status, 0);
  EXPECT_THAT(Names("out"), ElementsAreArray(kShortDrive));
}

TEST_F(OutputFiles, OnlyWhatAKilledRunLeftIsRemoved) {
  const std::string ended = EndedProcess();
  const std::string living = std::to_string(getpid());
  Write("precious.csv", "mine");
  for (const std::string& name : {ended, living, "0" + ended, ended + "x", std::string("x")}) {
    fs::create_directories(Path("out/.partial-" + name));
    Write("out/.partial-" + name + "/drive.png", "half");
    Write("out/.partial-" + name + "/notes.txt", "mine");
  }
  const std::string other = EndedProcess();
  fs::create_directories(Path("elsewhere"));
  Write("elsewhere/drive.png", "mine");
  fs::create_symlink("../elsewhere", Path("out/.partial-" + other));
  ASSERT_EQ(Run("$DEMO $WAY --out out").status, 0);
  EXPECT_THAT(Names("out/.partial-" + ended), ElementsAre("notes.txt"));
  for (const std::string& name : {living, "0" + ended, ended + "x", std::string("x")}) {
    EXPECT_THAT(Names("out/.partial-" + name), ElementsAre("drive.png", "notes.txt")) << name;
  }
  EXPECT_THAT(Names("elsewhere"), ElementsAre("drive.png"));
  EXPECT_TRUE(fs::is_symlink(Path("out/.partial-" + other)));
}

// All files are of the same drive.
TEST_F(OutputFiles, TwoDrivesIntoOneFolderDoNotMix) {
  const std::string other = "--start=1.2,6.9,0 --goal=2.6,7.6";
  ASSERT_EQ(Run("$DEMO $WAY --out first").status, 0);
  ASSERT_EQ(Run("$DEMO " + other + " --out second").status, 0);
  const Finished both = Run("$DEMO $WAY --out out & $DEMO " + other + " --out out; a=$?; wait $!; exit $((a + $?))");
  EXPECT_EQ(both.status, 0) << both.output;
  EXPECT_THAT(Names("out"), ElementsAreArray(kShortDrive));
  const std::string winner = Read("out/result.json") == Read("first/result.json") ? "first/" : "second/";
  for (const std::string& name : kShortDrive) {
    EXPECT_TRUE(Read("out/" + name) == Read(winner + name)) << name;
  }
}

TEST_F(OutputFiles, NothingIsPublishedWhileAnotherProgramPublishes) {
  fs::create_directory(Path("out"));
  const int folder = open(Path("out").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  const Finished demo = Run("$DEMO $WAY --out out");
  close(folder);
  EXPECT_EQ(demo.status, 7);
  EXPECT_THAT(demo.last_line, HasSubstr("another program is writing there"));
  EXPECT_THAT(Names("out"), IsEmpty());
}

// Control characters in a folder's name do not reach the terminal.
TEST_F(OutputFiles, NamesArePrintedAsTextAlone) {
  fs::create_directories(Path("m\x1b[31m"));
  for (const char* file : {"hall.png", "hall.yaml"}) {
    const std::string name = std::string(file) == "hall.yaml" ? "h\x1b[31m.yaml" : file;
    fs::copy_file(std::string(CONTROLLER_BASE_DEMO_MAPS "/") + file, Path("m\x1b[31m") / name);
  }
  for (const char* line :
       {"$DEMO $WAY --out $'o\\e[31m\\nb' --bag $'b\\e[31m'", "$DEMO --runs 1 --out $'o\\e[31m\\nb'",
        "$MARATHON --km 0.001 --worlds 1 --maps $'m\\e[31m' --out $'o\\e[31m\\nb'",
        "$MARATHON --km 0.001 --worlds 1 --maps $'n\\e[31m' --out $'/proc/a\\e[31m\\nb'", "$REPLAY $'n\\e[31m'"}) {
    const Finished finished = Run(line);
    EXPECT_THAT(finished.output, HasSubstr("\\x1b[31m")) << line;
    EXPECT_THAT(finished.output, Not(HasSubstr("\x1b"))) << line;
    EXPECT_THAT(finished.output, Not(HasSubstr("\nb"))) << line;
  }
}

class BagFiles : public ProgramRun {};

TEST_F(BagFiles, WhatCannotBeReplacedByABagStays) {
  fs::create_symlink("nowhere/a.bag", Path("dangling"));
  fs::create_symlink("loop", Path("loop"));
  fs::create_directory(Path("folder"));
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  for (const char* name : {"dangling", "loop", "folder", "pipe"}) {
    ExpectOneLine(Run(std::string("$DEMO $WAY --bag ") + name), 7, std::string("cannot write the bag ") + name + ": ");
  }
  EXPECT_THAT(Names(""), ElementsAre("dangling", "folder", "loop", "pipe"));
  EXPECT_TRUE(fs::is_fifo(Path("pipe")));
}

TEST_F(BagFiles, ABagThatTheDrivesFilesWouldReplaceIsRefused) {
  for (const char* arguments :
       {"--out o --bag o/drive.png", "--out o --bag ./o/../o/result.json", "--out . --bag events.csv"}) {
    ExpectOneLine(Run(std::string("$DEMO $WAY ") + arguments), 7, ": a file of the drive has this name");
  }
  EXPECT_THAT(Names(""), IsEmpty());
}

TEST_F(BagFiles, ALinkToABagStaysOne) {
  Write("real.bag", "an earlier one");
  fs::create_symlink("real.bag", Path("link.bag"));
  EXPECT_EQ(Run("$DEMO $WAY --bag link.bag").status, 0);
  EXPECT_EQ(fs::read_symlink(Path("link.bag")), "real.bag");
  EXPECT_EQ(Run("$REPLAY real.bag").status, 0);
  EXPECT_THAT(Names(""), ElementsAre("demo-out", "link.bag", "real.bag"));
}

TEST_F(BagFiles, AnActiveFileThatIsNoBagStays) {
  Write("a.bag.active", "notes");
  ExpectOneLine(Run("$DEMO $WAY --bag a.bag"), 7, "a.bag.active");
  EXPECT_EQ(Read("a.bag.active"), "notes");
  fs::remove(Path("a.bag.active"));
  Write("notes", "mine");
  fs::create_symlink("notes", Path("a.bag.active"));
  ExpectOneLine(Run("$DEMO $WAY --bag a.bag"), 7, "a.bag.active");
  EXPECT_EQ(Read("notes"), "mine");
}

TEST_F(BagFiles, OneDriveAtATimeIsRecordedIntoABag) {
  ChildProcess first = Start("exec $DEMO --realtime $WAY --bag a.bag --out first");
  ASSERT_TRUE(Prints("new path"));
  ExpectOneLine(Run("$DEMO $WAY --bag a.bag --out second"), 7, "a.bag");
  EXPECT_EQ(Wait(&first).status, 0);
  EXPECT_EQ(Run("$REPLAY a.bag").status, 0);
  EXPECT_THAT(Names(""), ElementsAre("a.bag", "first"));
}

TEST_F(BagFiles, ARecordingThatWasKilledIsReplacedByTheNext) {
  ChildProcess killed = Start("exec $DEMO --realtime --bag a.bag");
  ASSERT_TRUE(Prints("new path"));
  kill(killed.pid(), SIGKILL);
  killed.WaitForEnd();
  ASSERT_THAT(Names(""), Contains("a.bag.active"));
  EXPECT_EQ(Run("$DEMO $WAY --bag a.bag").status, 0);
  EXPECT_EQ(Run("$REPLAY a.bag").status, 0);
  EXPECT_THAT(Names(""), ElementsAre("a.bag", "demo-out"));
}

}  // namespace
}  // namespace controller_base_test
