// ROS masters that do not answer, or answer nonsense: a line, a status and an end in bounded time.

#include <gmock/gmock.h>
#include <signal.h>

#include <string>
#include <vector>

#include "ros_master/ros_master_process.h"
#include "test/demo/programs/program_run.h"
#include "test/ros_master/fake_master.h"
#include "test/ros_master/listening.h"

namespace controller_base_test {
namespace {

using controller_base::demo::ChildProcess;
using controller_base::ros_master::RosMasterProcess;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using XmlRpc::XmlRpcValue;

class StrangeMasters : public ProgramRun {
 protected:
  Finished DriveAt(const FakeMaster& master, const std::string& arguments) const {
    return Run("exec $DEMO $WAY --bag a.bag " + arguments, {"ROS_MASTER_URI=" + master.Uri()});
  }
};

TEST_F(StrangeMasters, OneThatIsSilentIsNone) {
  const FakeMaster master({});
  const Finished demo = DriveAt(master, "");
  EXPECT_EQ(demo.status, 0) << demo.output;
  EXPECT_THAT(demo.output, HasSubstr("none answers at " + master.Uri()));
}

TEST_F(StrangeMasters, OneThatFallsSilentEndsTheProgram) {
  for (const char* arguments : {"", "--realtime"}) {
    const FakeMaster master({{"getPid", 1}});
    const Finished demo = DriveAt(master, arguments);
    EXPECT_EQ(demo.status, 8) << demo.output;
    EXPECT_EQ(demo.last_line, "controller_base_demo: the ROS master at " + master.Uri() + " does not answer");
    EXPECT_THAT(Names(""), IsEmpty());
  }
}

TEST_F(StrangeMasters, AnInterruptDoesNotWaitForOneThatFellSilent) {
  const FakeMaster master({{"getPid", 1}});
  ChildProcess demo = Start("exec $DEMO $WAY --bag a.bag", {"ROS_MASTER_URI=" + master.Uri()});
  ASSERT_TRUE(Until([&] { return master.Questions() > 1; }));
  kill(demo.pid(), SIGTERM);
  const Finished finished = Wait(&demo);
  EXPECT_EQ(finished.status, 130) << finished.output;
  EXPECT_THAT(finished.last_line, HasSubstr("interrupted; the ROS master at " + master.Uri() + " does not answer"));
  EXPECT_THAT(Names(""), IsEmpty());
}

// The files are complete by then.
TEST_F(StrangeMasters, OneThatFallsSilentDuringTheDriveCostsNoFile) {
  const auto master = RosMasterProcess::StartOnFreePort();
  ChildProcess demo = Start("exec $DEMO $WAY --realtime --bag a.bag", {"ROS_MASTER_URI=" + master->Uri()});
  ASSERT_TRUE(Prints("new path"));
  kill(master->Pid(), SIGSTOP);
  const Finished finished = Wait(&demo);
  EXPECT_EQ(finished.status, 0) << finished.output;
  EXPECT_THAT(finished.output, HasSubstr("Reached: "));
  EXPECT_EQ(finished.last_line, "controller_base_demo: the ROS master at " + master->Uri() + " does not answer");
  EXPECT_THAT(Names(""), ElementsAre("a.bag", "demo-out"));
  EXPECT_THAT(Names("demo-out"), Contains("result.json"));
}

// The master gives the same answer to every call.
FakeMaster::Answers Always(const XmlRpcValue& answer) {
  FakeMaster::Answers answers;
  for (const char* method : {"deleteParam", "getParam", "getPublishedTopics", "hasParam", "registerPublisher",
                             "registerService", "registerSubscriber", "setParam", "subscribeParam",
                             "unregisterPublisher", "unregisterService", "unregisterSubscriber", "unsubscribeParam"}) {
    answers[method] = answer;
  }
  answers["getPid"] = 1;
  return answers;
}

TEST_F(StrangeMasters, OneThatAnswersNonsenseEndsTheProgram) {
  XmlRpcValue list;
  list[0] = 42;
  for (const XmlRpcValue& answer : {XmlRpcValue(42), XmlRpcValue("hello"), list}) {
    const FakeMaster master(Always(answer));
    const Finished demo = DriveAt(master, "");
    EXPECT_EQ(demo.status, 8) << demo.output;
    EXPECT_THAT(demo.last_line, HasSubstr("controller_base_demo: the ROS master at " + master.Uri()));
    EXPECT_THAT(Names(""), IsEmpty());
  }
}

class PortsOfThePrograms : public ProgramRun {};

TEST_F(PortsOfThePrograms, AreForThisMachineAloneAtAMasterOfTheirOwn) {
  ChildProcess demo = Start("exec $DEMO --realtime");
  ASSERT_TRUE(Prints("new path"));
  EXPECT_TRUE(Until([&] {
    return ListeningAddressesOf(demo.pid()) == std::vector<std::string>{kLoopbackAddress, kLoopbackAddress};
  })) << testing::PrintToString(ListeningAddressesOf(demo.pid()));
}

TEST_F(PortsOfThePrograms, AreWhatTheMastersOwnerWantsAtAnotherOne) {
  const auto master = RosMasterProcess::StartOnFreePort();
  ChildProcess demo = Start("exec $DEMO --realtime", {"ROS_MASTER_URI=" + master->Uri()});
  ASSERT_TRUE(Prints("new path"));
  EXPECT_THAT(ListeningAddressesOf(demo.pid()), Contains(testing::Ne(kLoopbackAddress)));
}

}  // namespace
}  // namespace controller_base_test
