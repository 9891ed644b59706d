// The programs in environments that lack something usual.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "test/demo/programs/program_run.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Homeless : public ProgramRun, public testing::WithParamInterface<const char*> {
 protected:
  // The folder for log files is removed afterwards.
  void ExpectSuccess(const std::string& line) const {
    const Finished program = Run(std::string("unset ROS_LOG_DIR ROS_HOME; mkdir -p logs; export TMPDIR=$PWD/logs; ") +
                                 GetParam() + "; " + line);
    EXPECT_EQ(program.status, 0) << program.output;
    EXPECT_THAT(program.output, Not(HasSubstr("filesystem")));
    EXPECT_THAT(Names("logs"), IsEmpty());
  }
};

TEST_P(Homeless, EveryProgramWorks) {
  ExpectSuccess("$DEMO $WAY --bag a.bag");
  ExpectSuccess("$REPLAY a.bag");
  ExpectSuccess("$DEMO --runs 1");
  ExpectSuccess("$MARATHON --km 0.001 --worlds 1");
}

INSTANTIATE_TEST_SUITE_P(Programs, Homeless,
                         testing::Values("export HOME=/nonexistent", "export HOME=/dev/null", "unset HOME",
                                         "touch home; export HOME=$PWD/home"),
                         [](const auto& home) { return std::to_string(home.index); });

using Surroundings = ProgramRun;

TEST_F(Surroundings, AHomeIsUsedWhereItCan) {
  EXPECT_EQ(Run("unset ROS_LOG_DIR ROS_HOME; export HOME=$PWD; $DEMO $WAY").status, 0);
  EXPECT_THAT(Names(""), ElementsAre(".ros", "demo-out"));
}

TEST_F(Surroundings, NoPlaceForTemporaryFilesIsNoReasonToEnd) {
  EXPECT_EQ(Run("$DEMO $WAY", {"TMPDIR=/nonexistent", "HOME=/nonexistent"}).status, 0);
  EXPECT_EQ(Run("$DEMO $WAY", {"TMPDIR=/proc", "HOME=/nonexistent"}).status, 0);
}

TEST_F(Surroundings, TooFewOpenFilesAreOneLineAndLeaveNothing) {
  ExpectOneLine(Run("ulimit -n 12; $DEMO $WAY --bag a.bag"), 1, "open files");
  ExpectOneLine(Run("ulimit -n 12; $DEMO --runs 1"), 1, "open files");
  ExpectOneLine(Run("ulimit -n 12; $MARATHON --km 0.001 --worlds 1"), 1, "open files");
  ExpectOneLine(Run("ulimit -n 12; $REPLAY a.bag"), 4, "open files");
  EXPECT_THAT(Names(""), IsEmpty());
}

// The user's soft limit is raised to the hard limit.
TEST_F(Surroundings, ASoftLimitOfOpenFilesIsRaised) { EXPECT_EQ(Run("ulimit -S -n 12; $DEMO $WAY").status, 0); }

}  // namespace
}  // namespace controller_base_test
