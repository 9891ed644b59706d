#include "recording/follower_messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "demo/replay/replay.h"
#include "follower/local_map.h"

namespace controller_base::demo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

nav_msgs::Path SomePath(double x) {
  nav_msgs::Path path;
  path.header.frame_id = "map";
  path.header.seq = 7;
  path.poses.resize(2);
  path.poses[0].header.stamp = ros::Time(3, 1);
  path.poses[1].pose.position.x = x;
  path.poses[1].pose.orientation.w = 0.5;
  return path;
}

// Every cost byte, marks that do not follow the costs, and numbers that a float would round.
costmap_2d::Costmap2D SomeMap() {
  costmap_2d::Costmap2D map(16, 17, 0.1 + 1e-15, -1.0 / 3.0, 2.0 / 3.0);
  for (unsigned int i = 0; i < 16 * 17; ++i) {
    map.setCost(i % 16, i / 16, static_cast<unsigned char>(i % 256));
    map.SetLaserObstacle(i % 16, i / 16, i % 3 == 0);
  }
  return map;
}

void ExpectSameMap(const costmap_2d::Costmap2D& a, const costmap_2d::Costmap2D& b) {
  ASSERT_EQ(a.getSizeInCellsX(), b.getSizeInCellsX());
  ASSERT_EQ(a.getSizeInCellsY(), b.getSizeInCellsY());
  EXPECT_EQ(a.getResolution(), b.getResolution());
  EXPECT_EQ(a.getOriginX(), b.getOriginX());
  EXPECT_EQ(a.getOriginY(), b.getOriginY());
  for (unsigned int my = 0; my < a.getSizeInCellsY(); ++my) {
    for (unsigned int mx = 0; mx < a.getSizeInCellsX(); ++mx) {
      ASSERT_EQ(a.getCost(mx, my), b.getCost(mx, my)) << mx << ' ' << my;
      ASSERT_EQ(a.IsLaserObstacle(mx, my), b.IsLaserObstacle(mx, my)) << mx << ' ' << my;
    }
  }
}

nav_controller::CollisionEvent Contact(bool collided, const ros::Time& stamp, std::int8_t type) {
  nav_controller::CollisionEvent contact;
  contact.collided = collided;
  contact.stamp = stamp;
  contact.type = type;
  return contact;
}

follower::FollowerInput SomeInput() {
  follower::FollowerInput input;
  input.clock = ros::Time(99, 999'999'999);
  input.path = SomePath(0.1);
  input.contacts = {Contact(true, ros::Time(98, 7), 3), Contact(false, ros::Time(97, 8), -128),
                    Contact(true, ros::Time(200, 0), 127)};
  input.robot.header.frame_id = "map";
  input.robot.header.stamp = ros::Time(5, 6);
  input.robot.pose.position.x = 1.0 / 3.0;
  input.robot.pose.position.y = 1.0;
  input.robot.pose.position.z = kNan;
  input.robot.pose.orientation.z = -0.0;
  input.map = follower::ToLocalMapData(SomeMap());
  input.parameters.emplace();
  input.parameters->cruise_speed = 1.0 / 3.0;
  input.parameters->corridor_widths = {0.3, 0.7};
  input.parameters->latch_goal = false;
  input.is_fresh = true;
  input.back_contacts = {ros::Time(8, 1), ros::Time(9, 2)};
  return input;
}

TEST(InputMessages, LoseNothing) {
  const follower::FollowerInput input = SomeInput();
  const follower::FollowerInput read = recording::ToInput(recording::InputMessages(input));
  EXPECT_EQ(read.clock, input.clock);
  ASSERT_TRUE(read.path);
  EXPECT_TRUE(*read.path == *input.path);
  ASSERT_EQ(read.contacts.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(read.contacts[i].collided, input.contacts[i].collided);
    EXPECT_EQ(read.contacts[i].stamp, input.contacts[i].stamp);
    EXPECT_EQ(read.contacts[i].type, input.contacts[i].type);
  }
  ASSERT_TRUE(read.parameters);
  for (const follower::ParameterField& field : follower::ParameterFields()) {
    std::visit([&](auto member) { EXPECT_EQ(*read.parameters.*member, *input.parameters.*member) << field.name; },
               field.value);
  }
  EXPECT_TRUE(read.is_fresh);
  EXPECT_EQ(read.back_contacts, input.back_contacts);
  EXPECT_TRUE(read.robot.header == input.robot.header);
  EXPECT_EQ(read.robot.pose.position.x, 1.0 / 3.0);
  EXPECT_TRUE(std::isnan(read.robot.pose.position.z));
  EXPECT_TRUE(std::signbit(read.robot.pose.orientation.z));
  ExpectSameMap(ToCostmap(read.map.View()), ToCostmap(input.map.View()));
}

TEST(InputMessages, WhatIsNotThereIsNotToldOf) {
  follower::FollowerInput input = SomeInput();
  input.path.reset();
  input.contacts.clear();
  input.parameters.reset();
  input.is_fresh = false;
  const follower::FollowerInput read = recording::ToInput(recording::InputMessages(input));
  EXPECT_FALSE(read.path);
  EXPECT_THAT(read.contacts, IsEmpty());
  EXPECT_FALSE(read.parameters);
  EXPECT_FALSE(read.is_fresh);
}

TEST(InputMessages, TheClockComesFirst) {
  EXPECT_EQ(recording::InputMessages(SomeInput()).front().topic, recording::kCycleTopic);
}

// ---- Messages that are no input ----

std::string Complaint(const std::function<void(std::vector<TopicMessage>*)>& spoil) {
  std::vector<TopicMessage> messages = recording::InputMessages(SomeInput());
  spoil(&messages);
  try {
    recording::ToInput(messages);
  } catch (const recording::InputError& error) {
    return error.what();
  }
  return "none";
}

TopicMessage* Find(std::vector<TopicMessage>* messages, const std::string& name) {
  for (TopicMessage& message : *messages) {
    if (message.topic == recording::kInputPrefix + name) {
      return &message;
    }
  }
  throw std::logic_error("no message on " + name);
}

TEST(ToInput, NamesWhatIsMissingTwiceOrOfAnotherType) {
  for (const std::string name : {"clock", "robot", "local_map/costs", "local_map/laser", "local_map/resolution"}) {
    EXPECT_EQ(Complaint([&](auto* messages) { Find(messages, name)->topic += "_"; }),
              recording::kInputPrefix + name + " is missing");
    EXPECT_EQ(Complaint([&](auto* messages) { messages->push_back(*Find(messages, name)); }),
              recording::kInputPrefix + name + " is there more than once");
  }
  EXPECT_THAT(Complaint([](auto* messages) { messages->push_back(*Find(messages, "path")); }),
              HasSubstr("path is there more than once"));
  for (const std::string name : {"clock", "path", "contacts", "robot", "local_map/costs"}) {
    EXPECT_EQ(Complaint([&](auto* messages) { Find(messages, name)->message = std_msgs::String(); }),
              recording::kInputPrefix + name + " has another type than it should");
  }
}

TEST(ToInput, RefusesWhatMakesNoSense) {
  const auto grid = [](const char* name, const std::function<void(nav_msgs::OccupancyGrid*)>& spoil) {
    return Complaint([&](auto* messages) { spoil(&std::get<nav_msgs::OccupancyGrid>(Find(messages, name)->message)); });
  };
  EXPECT_THAT(grid("local_map/costs", [](auto* costs) { costs->data.pop_back(); }), HasSubstr("as many cells"));
  EXPECT_THAT(grid("local_map/laser", [](auto* laser) { laser->data.clear(); }), HasSubstr("as many cells"));
  EXPECT_THAT(grid("local_map/costs", [](auto* costs) { costs->info.width = 65536 * 65535u; }),
              HasSubstr("as many cells"));
  EXPECT_THAT(grid("local_map/costs", [](auto* costs) { costs->info.origin.position.x = kNan; }),
              HasSubstr("local_map is no map"));
  EXPECT_THAT(Complaint([](auto* messages) {
                std::get<std_msgs::Float64>(Find(messages, "local_map/resolution")->message).data = 0.0;
              }),
              HasSubstr("local_map is no map"));
  EXPECT_THAT(
      Complaint([](auto* messages) { std::get<nav_msgs::Path>(Find(messages, "path")->message).poses.clear(); }),
      HasSubstr("path has no poses"));
  const auto parameters = [](auto change) {
    return Complaint(
        [&](auto* messages) { change(&std::get<std_msgs::Float64MultiArray>(Find(messages, "parameters")->message)); });
  };
  EXPECT_THAT(parameters([](auto* message) { message->layout.dim[0].label = "wings"; }), HasSubstr("has not"));
  EXPECT_THAT(parameters([](auto* message) { message->data.pop_back(); }), HasSubstr("fewer values"));
  EXPECT_THAT(parameters([](auto* message) { message->layout.dim[0].size = 0; }), HasSubstr("robot_radius is nan"));
  EXPECT_THAT(parameters([](auto* message) { message->data[0] = 100.0; }), HasSubstr("robot_radius is 100 m"));
  EXPECT_THAT(Complaint([](auto* messages) {
                std::get<geometry_msgs::PoseStamped>(Find(messages, "robot")->message).pose.position.x = kNan;
              }),
              HasSubstr("robot does not stand on the local map"));
  EXPECT_THAT(Complaint([](auto* messages) {
                std::get<sensor_msgs::Joy>(Find(messages, "contacts")->message).buttons.pop_back();
              }),
              HasSubstr("contacts does not have two buttons"));
}

// ---- Outputs ----

follower::DetourReport SomeDetour() {
  return {ros::Time(4, 5),
          {1.0, 2.0, 3.0},
          follower::ToLocalMapData(SomeMap()),
          nav_msgs::OccupancyGrid(),
          {follower::VirtualBox()},
          SomePath(1.0),
          SomePath(2.0),
          SomePath(3.0),
          false,
          false};
}

follower::Blockage SomeBlockage() {
  follower::Blockage blockage;
  blockage.run = SomePath(4.0);
  return blockage;
}

// With everything in it, and what hangs on it writable.
struct Writable {
  follower::FollowerOutput output;
  std::shared_ptr<follower::DetourReport> detour = std::make_shared<follower::DetourReport>(SomeDetour());
  std::shared_ptr<follower::Blockage> blockage = std::make_shared<follower::Blockage>(SomeBlockage());

  Writable() {
    output.outcome.state = follower::DriveState::kAborted;
    output.outcome.reason = "why";
    output.state = "path";
    output.ahead = SomePath(5.0);
    output.detour = detour;
    output.blockage = blockage;
    output.boxes = {follower::VirtualBox()};
    output.events = {{ros::Time(6, 7), follower::EventKind::kContact, geometry_msgs::Point(), "text"}};
    output.detours = {SomeDetour()};
  }
};

std::vector<TopicMessage> Told(const Writable& writable) { return recording::OutputMessages().Next(writable.output); }

TEST(OutputMessages, TheSameOutputsAreTheSameMessages) {
  EXPECT_FALSE(FirstDifference(Told(Writable()), Told(Writable())));
}

struct Change {
  const char* topic;
  std::function<void(Writable*)> change;
};

// Each by as little as can be.
double* Nudge(double* number) {
  *number = std::nextafter(*number, 1e9);
  return number;
}

std::vector<Change> DetourChanges(follower::DetourReport* (*of)(Writable*)) {
  const auto on = [of](auto change) { return [of, change](Writable* writable) { change(of(writable)); }; };
  return {{"stamp", on([](follower::DetourReport* detour) { detour->stamp.nsec += 1; })},
          {"robot", on([](follower::DetourReport* detour) { Nudge(&detour->robot.x); })},
          {"robot", on([](follower::DetourReport* detour) { Nudge(&detour->robot.y); })},
          {"robot", on([](follower::DetourReport* detour) { Nudge(&detour->robot.yaw); })},
          {"map/costs", on([](follower::DetourReport* detour) { detour->map.costs.back() = 254; })},
          {"map/laser", on([](follower::DetourReport* detour) { detour->map.laser_marks.front() = 0; })},
          {"corridor", on([](follower::DetourReport* detour) { detour->corridor.data.push_back(0); })},
          {"boxes", on([](follower::DetourReport* detour) { Nudge(&detour->boxes[0].heading); })},
          {"path", on([](follower::DetourReport* detour) { Nudge(&detour->path.poses[0].pose.position.z); })},
          {"blocked", on([](follower::DetourReport* detour) { Nudge(&detour->blocked.poses[0].pose.position.z); })},
          {"way", on([](follower::DetourReport* detour) { detour->detour.header.seq += 1; })},
          {"is_repaired", on([](follower::DetourReport* detour) { detour->goal_repaired = true; })},
          {"is_smoothed", on([](follower::DetourReport* detour) { detour->smoothed = true; })}};
}

std::vector<Change> NumberChanges() {
  return {
      {"command", [](Writable* w) { Nudge(&w->output.command.speed); }},
      {"command", [](Writable* w) { Nudge(&w->output.command.turn_rate); }},
      {"outcome", [](Writable* w) { w->output.outcome.state = follower::DriveState::kReached; }},
      {"outcome", [](Writable* w) { w->output.outcome.state = follower::DriveState::kStalled; }},
      {"outcome", [](Writable* w) { w->output.outcome.state = follower::DriveState::kDriving; }},
      {"reason", [](Writable* w) { w->output.outcome.reason = ""; }},
      {"state", [](Writable* w) { w->output.state = "detour"; }},
      {"index", [](Writable* w) { ++w->output.index; }},
      {"deviation", [](Writable* w) { Nudge(&w->output.deviation); }},
      {"deviation", [](Writable* w) { w->output.deviation = -0.0; }},
      {"deviation", [](Writable* w) { w->output.deviation = kNan; }},
      {"progress", [](Writable* w) { Nudge(&w->output.progress.moved_distance); }},
      {"progress", [](Writable* w) { Nudge(&w->output.progress.total_distance); }},
      {"progress", [](Writable* w) { Nudge(&w->output.progress.distance_ratio); }},
      {"progress", [](Writable* w) { Nudge(&w->output.progress.elapsed_time); }},
      {"progress", [](Writable* w) { Nudge(&w->output.progress.total_time); }},
      {"progress", [](Writable* w) { Nudge(&w->output.progress.time_ratio); }},
      {"ahead", [](Writable* w) { Nudge(&w->output.ahead.poses[1].pose.orientation.x); }},
      {"ahead", [](Writable* w) { w->output.ahead.poses.clear(); }},
  };
}

std::vector<Change> ObjectChanges() {
  return {
      {"boxes", [](Writable* w) { Nudge(&w->output.boxes[0].center.x); }},
      {"boxes", [](Writable* w) { Nudge(&w->output.boxes[0].center.y); }},
      {"boxes", [](Writable* w) { Nudge(&w->output.boxes[0].center.z); }},
      {"boxes", [](Writable* w) { Nudge(&w->output.boxes[0].heading); }},
      {"boxes", [](Writable* w) { w->output.boxes.clear(); }},
      {"events", [](Writable* w) { w->output.events[0].stamp.nsec += 1; }},
      {"events", [](Writable* w) { w->output.events[0].kind = follower::EventKind::kBox; }},
      {"events", [](Writable* w) { Nudge(&w->output.events[0].position.y); }},
      {"events", [](Writable* w) { w->output.events[0].text = "other"; }},
      {"events", [](Writable* w) { w->output.events.clear(); }},
      {"events", [](Writable* w) { w->output.events.push_back(w->output.events[0]); }},
      {"new_detours/stamp", [](Writable* w) { w->output.detours.clear(); }},
      {"is_on_detour", [](Writable* w) { w->output.detour = nullptr; }},
      {"is_blocked", [](Writable* w) { w->output.blockage = nullptr; }},
      {"blockage/run", [](Writable* w) { Nudge(&w->blockage->run.poses[0].pose.position.x); }},
      {"blockage/sides", [](Writable* w) { Nudge(&w->blockage->left.x); }},
      {"blockage/sides", [](Writable* w) { Nudge(&w->blockage->right.z); }},
      {"blockage/is_bilateral", [](Writable* w) { w->blockage->is_bilateral = true; }},
  };
}

void ExpectNoticed(const std::string& prefix, const std::vector<Change>& changes) {
  for (std::size_t i = 0; i < changes.size(); ++i) {
    SCOPED_TRACE(prefix + changes[i].topic + " " + std::to_string(i));
    Writable changed;
    changes[i].change(&changed);
    const std::optional<Difference> difference = FirstDifference(Told(Writable()), Told(changed));
    ASSERT_TRUE(difference);
    EXPECT_EQ(difference->output, prefix + changes[i].topic);
    EXPECT_NE(difference->recorded, difference->replayed);
    EXPECT_TRUE(FirstDifference(Told(changed), Told(Writable())));
  }
}

TEST(OutputMessages, EveryFieldCounts) {
  const std::string prefix = recording::kOutputPrefix;
  ExpectNoticed(prefix, NumberChanges());
  ExpectNoticed(prefix, ObjectChanges());
  ExpectNoticed(prefix + "detour/", DetourChanges([](Writable* w) { return w->detour.get(); }));
  ExpectNoticed(prefix + "new_detours/", DetourChanges([](Writable* w) { return &w->output.detours[0]; }));
}

std::size_t Count(const std::vector<TopicMessage>& messages, const std::string& name) {
  return static_cast<std::size_t>(std::count_if(messages.begin(), messages.end(), [&](const TopicMessage& message) {
    return message.topic == recording::kOutputPrefix + name;
  }));
}

TEST(OutputMessages, DetourAndBlockageAreToldOnceAndAgainWhenTheyAreOthers) {
  recording::OutputMessages messages;
  Writable writable;
  std::vector<std::size_t> ways;
  std::vector<std::size_t> runs;
  const auto tell = [&] {
    const std::vector<TopicMessage> told = messages.Next(writable.output);
    ways.push_back(Count(told, "detour/way"));
    runs.push_back(Count(told, "blockage/run"));
  };
  tell();
  tell();  // the same ones
  writable.output.detour = std::make_shared<follower::DetourReport>(SomeDetour());
  writable.output.blockage = std::make_shared<follower::Blockage>(SomeBlockage());
  tell();  // equal ones, but others
  writable.output.detour = nullptr;
  writable.output.blockage = nullptr;
  tell();
  writable.output.detour = writable.detour;
  writable.output.blockage = writable.blockage;
  tell();
  EXPECT_THAT(ways, ElementsAre(1, 0, 1, 0, 1));
  EXPECT_THAT(runs, ElementsAre(1, 0, 1, 0, 1));
}

// ---- How a difference is told ----

TEST(FirstDifference, TellsTheFieldThatDiffersWithAllItsDigits) {
  Writable changed;
  changed.output.command.turn_rate = std::nextafter(0.1, 1.0);
  Writable recorded;
  recorded.output.command.turn_rate = 0.1;
  const std::optional<Difference> difference = FirstDifference(Told(recorded), Told(changed));
  ASSERT_TRUE(difference);
  EXPECT_EQ(difference->output, "/controller_base_demo/output/command");
  EXPECT_EQ(difference->recorded, "angular.z: 0.10000000000000001");
  EXPECT_EQ(difference->replayed, "angular.z: 0.10000000000000002");
}

std::string RecordedValue(void (*change)(follower::FollowerOutput*)) {
  Writable recorded;
  change(&recorded.output);
  return FirstDifference(Told(recorded), Told(Writable())).value_or(Difference()).recorded;
}

TEST(FirstDifference, TellsWhereInAMessage) {
  EXPECT_EQ(RecordedValue([](follower::FollowerOutput* output) { output->ahead.poses[1].pose.position.x = 0.5; }),
            "poses[1].pose.position.x: 0.5");
  EXPECT_EQ(RecordedValue([](follower::FollowerOutput* output) { output->ahead.header.frame_id = "odom"; }),
            "header.frame_id: odom");
  EXPECT_EQ(RecordedValue([](follower::FollowerOutput* output) { output->progress.total_time = 0.5; }), "data[4]: 0.5");
  EXPECT_EQ(RecordedValue([](follower::FollowerOutput* output) { output->outcome.reason = "none"; }), "data: none");
  EXPECT_EQ(RecordedValue([](follower::FollowerOutput* output) { output->outcome.reason = ""; }), "data: ");
  EXPECT_EQ(RecordedValue([](follower::FollowerOutput* output) { output->events[0].position.y = 0.5; }),
            "pose.position.y: 0.5");
}

TEST(FirstDifference, TellsWhatOnlyOneOfThemSaid) {
  Writable silent;
  silent.output.events.clear();
  const std::optional<Difference> more = FirstDifference(Told(silent), Told(Writable()));
  ASSERT_TRUE(more);
  EXPECT_EQ(more->output, "/controller_base_demo/output/events");
  EXPECT_EQ(more->recorded, "nothing");
  EXPECT_EQ(more->replayed, "header.seq: 0, header.stamp: 6.000000007, header.frame_id: map, ns: contact, id: 0 ...");
  const std::optional<Difference> less = FirstDifference(Told(Writable()), Told(silent));
  ASSERT_TRUE(less);
  EXPECT_EQ(less->output, "/controller_base_demo/output/events");
  EXPECT_EQ(less->recorded, "header.seq: 0, header.stamp: 6.000000007, header.frame_id: map, ns: contact, id: 0 ...");
  EXPECT_EQ(less->replayed, "nothing");
}

TEST(FirstDifference, OfNothingIsNone) {
  EXPECT_FALSE(FirstDifference({}, {}));
  EXPECT_EQ(FirstDifference({}, {{"/a", std_msgs::Bool()}})->output, "/a");
  EXPECT_EQ(FirstDifference({{"/a", std_msgs::Bool()}}, {})->output, "/a");
  EXPECT_EQ(FirstDifference({{"/a", std_msgs::Bool()}}, {})->recorded, "data: 0");
}

TEST(FirstDifference, AnotherTypeIsADifferenceEvenWithTheSameBytes) {
  EXPECT_TRUE(FirstDifference({{"/a", std_msgs::UInt64()}}, {{"/a", std_msgs::Float64()}}));
}

}  // namespace
}  // namespace controller_base::demo
