// Bumper contacts: what is kept, what is counted, which way to turn, when to give up, and who holds the lock.
#include "controller_base/collision_history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <future>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "test/support/log_capture.h"
#include "test/support/sim_time.h"

namespace controller_base_test {
namespace {

using nav_controller::CollisionEvent;
using nav_controller::CollisionHistory;
using nav_controller::EventDirection;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

static_assert(!std::is_polymorphic_v<CollisionHistory> && std::is_default_constructible_v<CollisionHistory>);
static_assert(std::is_same_v<std::underlying_type_t<EventDirection>, std::int32_t>);
static_assert(static_cast<int>(EventDirection::None) == 0 && static_cast<int>(EventDirection::Left) == 1 &&
              static_cast<int>(EventDirection::Center) == 2 && static_cast<int>(EventDirection::Right) == 3);
static_assert(std::is_same_v<decltype(CollisionEvent::collided), bool>);
static_assert(std::is_same_v<decltype(CollisionEvent::stamp), ros::Time>);
static_assert(std::is_same_v<decltype(CollisionEvent::type), std::int8_t>);
static_assert(std::is_same_v<decltype(&CollisionHistory::IsTriggerEvent), bool (CollisionHistory::*)() const>);
static_assert(
    std::is_same_v<decltype(&CollisionHistory::GetEventDirection), EventDirection (CollisionHistory::*)() const>);
static_assert(std::is_same_v<decltype(&CollisionHistory::ShouldAbort), bool (CollisionHistory::*)() const>);
static_assert(std::is_same_v<decltype(&CollisionHistory::IsLeft), bool (CollisionHistory::*)() const>);
static_assert(
    std::is_same_v<decltype(&CollisionHistory::CalculateTurnAngle), void (CollisionHistory::*)(const EventDirection&)>);
static_assert(std::is_same_v<decltype(&CollisionHistory::ProcessNewCollision), bool (CollisionHistory::*)(int&)>);
static_assert(std::is_same_v<decltype(&CollisionHistory::ProcessNewEvent), bool (CollisionHistory::*)(double&)>);

constexpr double kSmallTurn = 0.5235987901687622;  // radians
constexpr double kLargeTurn = 1.5707963705062866;  // radians
static_assert(kSmallTurn == static_cast<double>(0.523598775598298873f));
static_assert(kLargeTurn == static_cast<double>(1.570796326794896619f));

enum Side : std::int8_t { kNone = 0, kLeft = 1, kRight = 2, kBoth = 3 };

constexpr int kUntouched = 12345;
const ros::Time kLastTime(4294967295u, 999999999u);

CollisionEvent EventAt(const ros::Time& stamp, std::int8_t type, bool collided = true) {
  CollisionEvent event;
  event.collided = collided;
  event.stamp = stamp;
  event.type = type;
  return event;
}

class CollisionHistoryTest : public SimTimeTest {
 protected:
  // A contact now, and half a second of time after it.
  void Hit(std::int8_t type) {
    history_.Add(EventAt(ros::Time::now(), type));
    Wait(0.5);
  }

  void HitAll(const std::vector<std::int8_t>& types) {
    for (const std::int8_t type : types) {
      Hit(type);
    }
  }

  int SignedCount() {
    int count = kUntouched;
    history_.ProcessNewCollision(count);
    return count;
  }

  double TurnAngle() {
    double angle = 0.0;
    history_.ProcessNewEvent(angle);
    return angle;
  }

  std::vector<CollisionEvent> PopAll() {
    std::vector<CollisionEvent> events;
    CollisionEvent event;
    while (history_.TryPopCollisionEvent(event)) {
      events.push_back(event);
    }
    return events;
  }

  LogCapture log_;
  CollisionHistory history_;
};

TEST_F(CollisionHistoryTest, ARecordStartsAtZero) {
  const CollisionEvent event{};
  EXPECT_FALSE(event.collided);
  EXPECT_EQ(event.stamp, ros::Time(0, 0));
  EXPECT_EQ(event.type, 0);
}

TEST_F(CollisionHistoryTest, StartsEmpty) {
  EXPECT_FALSE(history_.IsTriggerEvent());
  EXPECT_EQ(history_.GetEventDirection(), EventDirection::None);
  EXPECT_FALSE(history_.ShouldAbort());
  EXPECT_FALSE(history_.IsLeft());
  EXPECT_FALSE(history_.FetchCollision());
  EXPECT_EQ(history_.GetLastCollision().stamp, ros::Time(0, 0));
  EXPECT_FALSE(history_.GetLastCollision().collided);
  EXPECT_EQ(history_.GetLastCollision().type, 0);
  int count = kUntouched;
  EXPECT_FALSE(history_.ProcessNewCollision(count));
  EXPECT_EQ(count, kUntouched);
  double angle = 7.0;
  EXPECT_FALSE(history_.ProcessNewEvent(angle));
  EXPECT_EQ(angle, 0.0);
  CollisionEvent out = EventAt(ros::Time(8, 9), kBoth);
  EXPECT_FALSE(history_.TryPopCollisionEvent(out));
  EXPECT_EQ(out.stamp, ros::Time(8, 9));
  EXPECT_EQ(out.type, kBoth);
  EXPECT_TRUE(out.collided);
}

TEST_F(CollisionHistoryTest, AnEventAQuarterOfASecondLaterIsIgnored) {
  history_.Add(EventAt(ros::Time(100, 0), kLeft));
  TurnAngle();
  history_.Add(EventAt(ros::Time(100, 250000000), kRight));
  EXPECT_FALSE(history_.IsTriggerEvent());
  EXPECT_TRUE(history_.IsLeft());
  EXPECT_EQ(SignedCount(), -1);
  EXPECT_THAT(PopAll(), SizeIs(1));
}

TEST_F(CollisionHistoryTest, TheSpacingIsADifferenceOfTwoDoubles) {
  const auto accepted = [](const ros::Time& first, const ros::Time& second) {
    CollisionHistory history;
    history.Add(EventAt(first, kLeft));
    history.Add(EventAt(second, kRight));
    return history.GetLastCollision().type == kRight;
  };
  EXPECT_FALSE(accepted(ros::Time(0, 3000000), ros::Time(0, 302999999)));
  EXPECT_TRUE(accepted(ros::Time(0, 3000000), ros::Time(0, 303000000)));  // exactly 0.3
  EXPECT_FALSE(accepted(ros::Time(0, 0), ros::Time(0, 299999999)));
  EXPECT_TRUE(accepted(ros::Time(0, 0), ros::Time(0, 300000000)));
  EXPECT_FALSE(accepted(ros::Time(100, 0), ros::Time(100, 300000000)));  // 100.3 - 100.0 is just below 0.3
  EXPECT_TRUE(accepted(ros::Time(100, 0), ros::Time(100, 300000001)));
  EXPECT_TRUE(accepted(ros::Time(100, 100000000), ros::Time(100, 400000000)));  // 100.4 - 100.1 is just above
  EXPECT_FALSE(accepted(ros::Time(100, 0), ros::Time(100, 0)));
}

TEST_F(CollisionHistoryTest, AnEarlierEventIsIgnored) {
  Hit(kLeft);
  history_.Add(EventAt(ros::Time(99, 0), kRight));
  history_.Add(EventAt(ros::Time(0, 0), kRight));
  EXPECT_THAT(PopAll(), SizeIs(1));
}

TEST_F(CollisionHistoryTest, TheSpacingCountsFromTheNewestAcceptedEvent) {
  history_.Add(EventAt(ros::Time(100, 0), kLeft));
  history_.Add(EventAt(ros::Time(100, 200000000), kLeft));  // dropped
  history_.Add(EventAt(ros::Time(100, 400000000), kLeft));
  EXPECT_EQ(SignedCount(), -2);
}

TEST_F(CollisionHistoryTest, StampsAtBothEndsOfTime) {
  history_.Add(EventAt(ros::Time(0, 0), kLeft));
  history_.Add(EventAt(kLastTime, kLeft));
  EXPECT_EQ(SignedCount(), -2);
  history_.Add(EventAt(ros::Time(0, 0), kLeft));
  EXPECT_EQ(SignedCount(), -2);
  EXPECT_EQ(history_.GetLastCollision().stamp, kLastTime);
}

TEST_F(CollisionHistoryTest, KeepsTheLastTenOldestFirst) {
  for (std::uint32_t i = 0; i < 12; ++i) {
    history_.Add(EventAt(ros::Time(100 + i, 7), static_cast<std::int8_t>(i % 4), i % 2 == 0));
  }
  CollisionEvent event;
  for (std::uint32_t i = 2; i < 12; ++i) {
    ASSERT_TRUE(history_.TryPopCollisionEvent(event));
    EXPECT_EQ(event.stamp, ros::Time(100 + i, 7));
    EXPECT_EQ(event.type, static_cast<std::int8_t>(i % 4));
    EXPECT_EQ(event.collided, i % 2 == 0);
  }
  EXPECT_FALSE(history_.TryPopCollisionEvent(event));
  EXPECT_EQ(event.stamp, ros::Time(111, 7));  // left alone
}

TEST_F(CollisionHistoryTest, TenEventsAreAllKept) {
  HitAll({1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
  const std::vector<CollisionEvent> events = PopAll();
  ASSERT_THAT(events, SizeIs(10));
  EXPECT_EQ(events.front().stamp, ros::Time(100, 0));
}

TEST_F(CollisionHistoryTest, TheLastCollisionIsTheNewestAndStays) {
  Hit(kLeft);
  Hit(kBoth);
  for (int i = 0; i < 2; ++i) {
    const CollisionEvent last = history_.GetLastCollision();
    EXPECT_EQ(last.stamp, ros::Time(100, 500000000));
    EXPECT_EQ(last.type, kBoth);
    EXPECT_TRUE(last.collided);
  }
}

TEST_F(CollisionHistoryTest, PoppingTheNewestOpensTheHistoryForAnyStamp) {
  Hit(kLeft);
  PopAll();
  history_.Add(EventAt(ros::Time(1, 0), kLeft));
  EXPECT_EQ(SignedCount(), -2);
}

TEST_F(CollisionHistoryTest, LeftLeftRight) {
  HitAll({kLeft, kLeft});
  EXPECT_TRUE(history_.IsLeft());
  EXPECT_EQ(SignedCount(), -2);
  Hit(kRight);
  EXPECT_FALSE(history_.IsLeft());
  EXPECT_EQ(SignedCount(), 3);
}

TEST_F(CollisionHistoryTest, RightThenLeft) {
  Hit(kRight);
  EXPECT_EQ(SignedCount(), 1);
  Hit(kLeft);
  EXPECT_TRUE(history_.IsLeft());
  EXPECT_EQ(SignedCount(), -2);
}

TEST_F(CollisionHistoryTest, BothSidesAfterNothingCountsRight) {
  Hit(kBoth);
  EXPECT_FALSE(history_.IsLeft());
  EXPECT_EQ(SignedCount(), 1);
}

TEST_F(CollisionHistoryTest, BothSidesAfterLeftKeepsLeft) {
  HitAll({kLeft, kLeft, kBoth});
  EXPECT_TRUE(history_.IsLeft());
  EXPECT_EQ(SignedCount(), -3);
}

TEST_F(CollisionHistoryTest, BothSidesAfterRightAddsLeft) {
  HitAll({kRight, kBoth});
  EXPECT_TRUE(history_.IsLeft());
  EXPECT_EQ(SignedCount(), -2);
}

// The right count is reported only while the left one is 0, as it is again after its wrap at 256.
TEST_F(CollisionHistoryTest, BothSidesAfterLeftCountsRight) {
  Hit(kLeft);
  for (int i = 0; i < 255; ++i) {
    Hit(kBoth);
  }
  EXPECT_TRUE(history_.IsLeft());
  Hit(kRight);  // the 256th
  EXPECT_EQ(SignedCount(), kUntouched);
}

TEST_F(CollisionHistoryTest, BothSidesAfterRightSetsLeftToOne) {
  HitAll({kRight, kBoth});
  for (int i = 0; i < 255; ++i) {
    Hit(kLeft);  // left 2 .. 256
  }
  EXPECT_FALSE(history_.IsLeft());
}

TEST_F(CollisionHistoryTest, TheCountersWrapAt256) {
  for (int i = 0; i < 255; ++i) {
    Hit(kLeft);
  }
  EXPECT_EQ(SignedCount(), -255);
  EXPECT_TRUE(history_.ShouldAbort());
  Hit(kLeft);
  EXPECT_FALSE(history_.IsLeft());
  EXPECT_FALSE(history_.ShouldAbort());
  EXPECT_EQ(SignedCount(), kUntouched);  // neither left nor right contacts
  Hit(kLeft);
  EXPECT_EQ(SignedCount(), -1);
}

TEST_F(CollisionHistoryTest, TheRightCounterWrapsToo) {
  for (int i = 0; i < 256; ++i) {
    Hit(kRight);
  }
  EXPECT_EQ(SignedCount(), kUntouched);
}

TEST_F(CollisionHistoryTest, ALeftContactClearsTheRightCounter) {
  HitAll({kRight, kRight, kLeft});
  for (int i = 0; i < 255; ++i) {
    Hit(kLeft);  // the left count is 0 again: the right one is reported
  }
  EXPECT_EQ(SignedCount(), kUntouched);
}

TEST_F(CollisionHistoryTest, AnEventOfTypeZeroOnlyTriggers) {
  history_.Add(EventAt(ros::Time::now(), kNone));
  EXPECT_TRUE(history_.IsTriggerEvent());
  EXPECT_EQ(history_.GetEventDirection(), EventDirection::None);
  EXPECT_FALSE(history_.IsLeft());
  int count = kUntouched;
  EXPECT_FALSE(history_.ProcessNewCollision(count));
  EXPECT_EQ(count, kUntouched);
  EXPECT_TRUE(history_.IsTriggerEvent());
  EXPECT_EQ(TurnAngle(), -kSmallTurn);  // strategy 2
  EXPECT_THAT(PopAll(), SizeIs(1));
}

TEST_F(CollisionHistoryTest, AnEventOfTypeZeroKeepsAnEarlierContactNew) {
  Hit(kRight);
  Hit(kNone);
  int count = kUntouched;
  EXPECT_TRUE(history_.ProcessNewCollision(count));
  EXPECT_EQ(count, 1);
}

TEST_F(CollisionHistoryTest, AnUnknownTypeIsNewButNotCounted) {
  for (const int type : {4, 5, 127, -1, -128}) {
    CollisionHistory history;
    history.Add(EventAt(ros::Time::now(), static_cast<std::int8_t>(type)));
    EXPECT_TRUE(history.IsTriggerEvent());
    EXPECT_EQ(history.GetEventDirection(), EventDirection::None);
    int count = kUntouched;
    EXPECT_TRUE(history.ProcessNewCollision(count)) << type;
    EXPECT_EQ(count, kUntouched);
  }
}

TEST_F(CollisionHistoryTest, EventsHaveTheDirectionOfTheirType) {
  const std::vector<std::pair<std::int8_t, EventDirection>> directions = {{kLeft, EventDirection::Left},
                                                                          {kRight, EventDirection::Right},
                                                                          {kBoth, EventDirection::Center},
                                                                          {kNone, EventDirection::None}};
  for (const auto& [type, direction] : directions) {
    Hit(type);
    EXPECT_TRUE(history_.IsTriggerEvent());
    EXPECT_EQ(history_.GetEventDirection(), direction) << int{type};
  }
}

TEST_F(CollisionHistoryTest, TenContactsAreEnough) {
  HitAll({kLeft, kRight, kBoth, kLeft, kRight, kBoth, kLeft, kRight, kBoth});
  Hit(kNone);
  Hit(9);
  EXPECT_FALSE(history_.ShouldAbort());
  Hit(kLeft);
  EXPECT_TRUE(history_.ShouldAbort());
  EXPECT_EQ(SignedCount(), -10);
  EXPECT_TRUE(history_.ShouldAbort());  // consuming the contact takes nothing back
  Hit(kRight);
  EXPECT_TRUE(history_.ShouldAbort());
}

TEST_F(CollisionHistoryTest, ProcessNewCollisionConsumesContactAndTrigger) {
  Hit(kRight);
  int count = 0;
  EXPECT_TRUE(history_.ProcessNewCollision(count));
  EXPECT_FALSE(history_.IsTriggerEvent());
  EXPECT_EQ(history_.GetEventDirection(), EventDirection::None);
  count = 0;
  EXPECT_FALSE(history_.ProcessNewCollision(count));
  EXPECT_EQ(count, 1);  // written all the same
}

TEST_F(CollisionHistoryTest, ProcessNewCollisionWithoutANewOneKeepsTheTrigger) {
  history_.Add(true);
  int count = 0;
  EXPECT_FALSE(history_.ProcessNewCollision(count));
  EXPECT_TRUE(history_.IsTriggerEvent());
}

TEST_F(CollisionHistoryTest, ProcessNewEventConsumesTheTriggerAndKeepsTheContactNew) {
  Hit(kRight);
  double angle = 0.0;
  EXPECT_TRUE(history_.ProcessNewEvent(angle));
  EXPECT_EQ(angle, kSmallTurn);
  EXPECT_FALSE(history_.IsTriggerEvent());
  EXPECT_EQ(history_.GetEventDirection(), EventDirection::None);
  angle = 0.0;
  EXPECT_FALSE(history_.ProcessNewEvent(angle));
  EXPECT_EQ(angle, kSmallTurn);  // written all the same
  int count = 0;
  EXPECT_TRUE(history_.ProcessNewCollision(count));
}

TEST_F(CollisionHistoryTest, FirstLeftTurnsRight) {
  Hit(kLeft);
  EXPECT_EQ(TurnAngle(), -kSmallTurn);
  Hit(kRight);
  EXPECT_EQ(TurnAngle(), -kLargeTurn);
  Hit(kLeft);
  EXPECT_EQ(TurnAngle(), -kSmallTurn);
  Hit(kBoth);
  EXPECT_EQ(TurnAngle(), -kSmallTurn);
  Hit(kRight);
  EXPECT_EQ(TurnAngle(), -kLargeTurn);
  Hit(kNone);
  EXPECT_EQ(TurnAngle(), -kSmallTurn);
}

TEST_F(CollisionHistoryTest, FirstRightOrBothTurnsLeft) {
  for (const Side first : {kRight, kBoth}) {
    history_.Reset();
    Hit(first);
    EXPECT_EQ(TurnAngle(), kSmallTurn);
    Hit(kLeft);
    EXPECT_EQ(TurnAngle(), kLargeTurn);
    Hit(kRight);
    EXPECT_EQ(TurnAngle(), kSmallTurn);
    Hit(kLeft);
    EXPECT_EQ(TurnAngle(), kLargeTurn);
    Hit(kBoth);
    EXPECT_EQ(TurnAngle(), kSmallTurn);
    Hit(kNone);
    EXPECT_EQ(TurnAngle(), kSmallTurn);
  }
}

TEST_F(CollisionHistoryTest, AStrategyCanBeAskedForWithoutAContact) {
  const auto first_turn = [](EventDirection direction) {
    CollisionHistory history;
    history.CalculateTurnAngle(direction);
    double angle = 0.0;
    EXPECT_FALSE(history.ProcessNewEvent(angle));  // no trigger
    return angle;
  };
  EXPECT_EQ(first_turn(EventDirection::None), -kSmallTurn);
  EXPECT_EQ(first_turn(EventDirection::Left), -kSmallTurn);
  EXPECT_EQ(first_turn(EventDirection::Center), kSmallTurn);
  EXPECT_EQ(first_turn(EventDirection::Right), kSmallTurn);
  EXPECT_EQ(first_turn(static_cast<EventDirection>(4)), -kSmallTurn);
  EXPECT_EQ(first_turn(static_cast<EventDirection>(-1)), -kSmallTurn);
}

TEST_F(CollisionHistoryTest, ChoosingAStrategyIsLoggedOnce) {
  HitAll({kLeft, kRight, kLeft, kBoth, kNone});
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("[CollisionHistory] turn strategy: 2")));
  log_.Clear();
  history_.Reset();
  HitAll({kBoth, kLeft});
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("[CollisionHistory] turn strategy: 1")));
}

TEST_F(CollisionHistoryTest, NoLineComesAboveDebug) {
  const LogCapture from_info(ros::console::levels::Info);
  HitAll({kLeft, kRight, kBoth});
  history_.Add(std::int8_t{7});
  history_.Reset();
  history_.Add(true);
  EXPECT_THAT(from_info.Lines(), IsEmpty());
}

TEST_F(CollisionHistoryTest, AThousandContactsLogOneLine) {
  for (int i = 0; i < 1000; ++i) {
    Hit(kRight);
    history_.FetchCollision();
    SignedCount();
    TurnAngle();
  }
  EXPECT_THAT(log_.Lines(), SizeIs(1));
}

EventDirection DirectionOfMask(unsigned int mask) {
  static constexpr std::array<EventDirection, 8> kDirections = {
      EventDirection::None,   EventDirection::Left,   EventDirection::Right,  EventDirection::Center,
      EventDirection::Center, EventDirection::Center, EventDirection::Center, EventDirection::Center};
  return kDirections[mask & 7u];
}

TEST_F(CollisionHistoryTest, EveryMaskHasItsDirectionAndItsLine) {
  for (int mask = -128; mask < 128; ++mask) {
    CollisionHistory history;
    history.CalculateTurnAngle(EventDirection::Left);
    log_.Clear();
    history.Add(static_cast<std::int8_t>(mask));
    const EventDirection direction = DirectionOfMask(static_cast<unsigned int>(mask));
    EXPECT_EQ(history.GetEventDirection(), direction) << mask;
    EXPECT_EQ(history.IsTriggerEvent(), direction != EventDirection::None) << mask;
    EXPECT_THAT(log_.Lines(), ElementsAre(Debug("CollisionHistory::Add: " + std::to_string(mask) + ", " +
                                                std::to_string(static_cast<int>(direction)))));
  }
}

TEST_F(CollisionHistoryTest, AMaskLogsBeforeItChoosesAStrategy) {
  history_.Add(std::int8_t{1});
  EXPECT_THAT(log_.Lines(),
              ElementsAre(Debug("CollisionHistory::Add: 1, 1"), Debug("[CollisionHistory] turn strategy: 2")));
}

TEST_F(CollisionHistoryTest, AnEmptyMaskOnlyLogs) {
  history_.Add(std::int8_t{0});
  history_.Add(std::int8_t{8});
  history_.Add(std::int8_t{-8});
  EXPECT_FALSE(history_.IsTriggerEvent());
  EXPECT_THAT(log_.Lines(), ElementsAre(Debug("CollisionHistory::Add: 0, 0"), Debug("CollisionHistory::Add: 8, 0"),
                                        Debug("CollisionHistory::Add: -8, 0")));
  history_.Add(std::int8_t{2});
  EXPECT_EQ(TurnAngle(), kSmallTurn);  // the strategy was still open
}

TEST_F(CollisionHistoryTest, AnEmptyMaskKeepsAWaitingContact) {
  history_.Add(std::int8_t{2});
  history_.Add(std::int8_t{0});
  EXPECT_EQ(history_.GetEventDirection(), EventDirection::Right);
}

TEST_F(CollisionHistoryTest, AMaskIsNoPartOfTheHistory) {
  for (int i = 0; i < 20; ++i) {
    history_.Add(std::int8_t{1});
    history_.Add(std::int8_t{2});
  }
  EXPECT_FALSE(history_.ShouldAbort());
  EXPECT_FALSE(history_.IsLeft());
  int count = kUntouched;
  EXPECT_FALSE(history_.ProcessNewCollision(count));
  EXPECT_EQ(count, kUntouched);
  EXPECT_THAT(PopAll(), IsEmpty());
}

TEST_F(CollisionHistoryTest, MasksTurnLikeEvents) {
  history_.Add(std::int8_t{1});
  EXPECT_EQ(TurnAngle(), -kSmallTurn);
  history_.Add(std::int8_t{2});
  EXPECT_EQ(TurnAngle(), -kLargeTurn);
  history_.Add(std::int8_t{4});
  EXPECT_EQ(TurnAngle(), -kSmallTurn);
}

TEST_F(CollisionHistoryTest, APlainSignalIsAFrontalContactWhateverItSays) {
  for (const bool signal : {true, false}) {
    CollisionHistory history;
    log_.Clear();
    history.Add(signal);
    EXPECT_TRUE(history.IsTriggerEvent());
    EXPECT_EQ(history.GetEventDirection(), EventDirection::Center);
    EXPECT_FALSE(history.FetchCollision());
    int count = kUntouched;
    EXPECT_FALSE(history.ProcessNewCollision(count));
    EXPECT_EQ(count, kUntouched);
    double angle = 0.0;
    EXPECT_TRUE(history.ProcessNewEvent(angle));
    EXPECT_EQ(angle, kSmallTurn);
    EXPECT_THAT(log_.Lines(), ElementsAre(Debug("[CollisionHistory] turn strategy: 1")));
  }
}

TEST_F(CollisionHistoryTest, FetchReportsAFreshContactOnEveryCall) {
  history_.Add(EventAt(ros::Time(100, 0), kLeft));
  SetNow(ros::Time(100, 100000000));
  EXPECT_TRUE(history_.FetchCollision());
  EXPECT_TRUE(history_.FetchCollision());
  SetNow(ros::Time(100, 250000000));
  EXPECT_FALSE(history_.FetchCollision());
  int count = 0;
  EXPECT_FALSE(history_.ProcessNewCollision(count));  // no longer new
  SetNow(ros::Time(100, 100000000));
  EXPECT_FALSE(history_.FetchCollision());
}

TEST_F(CollisionHistoryTest, AContactIsFreshForExactlyTwoTenths) {
  for (const std::uint32_t second : {0u, 100u, 1700000000u}) {
    CollisionHistory history;
    history.Add(EventAt(ros::Time(second, 0), kLeft));
    SetNow(ros::Time(second, 200000000));
    EXPECT_TRUE(history.FetchCollision()) << second;
    SetNow(ros::Time(second, 200000001));
    EXPECT_FALSE(history.FetchCollision()) << second;
  }
}

TEST_F(CollisionHistoryTest, AContactOfTheFutureIsFresh) {
  history_.Add(EventAt(ros::Time(100, 0), kLeft));
  SetNow(ros::Time(50, 0));
  EXPECT_TRUE(history_.FetchCollision());
}

TEST_F(CollisionHistoryTest, AnEventWithoutContactIsNotFetchedButStaysNew) {
  history_.Add(EventAt(ros::Time(100, 0), kLeft, false));
  SetNow(ros::Time(200, 0));
  EXPECT_FALSE(history_.FetchCollision());
  int count = 0;
  EXPECT_TRUE(history_.ProcessNewCollision(count));
}

TEST_F(CollisionHistoryTest, OnlyTheNewestEventIsFetched) {
  history_.Add(EventAt(ros::Time(100, 0), kLeft, true));
  history_.Add(EventAt(ros::Time(101, 0), kLeft, false));
  EXPECT_FALSE(history_.FetchCollision());
}

TEST_F(CollisionHistoryTest, AnEventOfTypeZeroIsFetchedOnlyBesideANewContact) {
  history_.Add(EventAt(ros::Time(100, 0), kNone));
  EXPECT_FALSE(history_.FetchCollision());
  history_.Add(EventAt(ros::Time(101, 0), kLeft));
  history_.Add(EventAt(ros::Time(102, 0), kNone));
  EXPECT_TRUE(history_.FetchCollision());
}

TEST_F(CollisionHistoryTest, AConsumedContactIsNotFetched) {
  Hit(kLeft);
  SetNow(ros::Time(100, 0));
  EXPECT_TRUE(history_.FetchCollision());
  SignedCount();
  EXPECT_FALSE(history_.FetchCollision());
}

TEST_F(CollisionHistoryTest, APoppedContactIsNotFetchedButStaysNew) {
  Hit(kLeft);
  SetNow(ros::Time(100, 0));
  PopAll();
  EXPECT_FALSE(history_.FetchCollision());
  int count = 0;
  EXPECT_TRUE(history_.ProcessNewCollision(count));
}

TEST_F(CollisionHistoryTest, FetchingHoldsFromOneEndOfTimeToTheOther) {
  CollisionHistory early;
  early.Add(EventAt(ros::Time(0, 0), kLeft));
  SetNow(kLastTime);
  EXPECT_FALSE(early.FetchCollision());
  CollisionHistory late;
  late.Add(EventAt(kLastTime, kLeft));
  SetNow(ros::Time(0, 0));
  EXPECT_TRUE(late.FetchCollision());
}

TEST_F(CollisionHistoryTest, ResetForgetsAllButTheAngle) {
  HitAll({kLeft, kLeft, kRight, kBoth, kLeft, kLeft, kLeft, kLeft, kLeft, kRight});
  ASSERT_TRUE(history_.ShouldAbort());
  history_.Reset();
  EXPECT_FALSE(history_.ShouldAbort());
  EXPECT_FALSE(history_.IsLeft());
  EXPECT_FALSE(history_.IsTriggerEvent());
  EXPECT_EQ(history_.GetEventDirection(), EventDirection::None);
  EXPECT_FALSE(history_.FetchCollision());
  EXPECT_THAT(PopAll(), IsEmpty());
  int count = kUntouched;
  EXPECT_FALSE(history_.ProcessNewCollision(count));
  EXPECT_EQ(count, kUntouched);
  EXPECT_EQ(TurnAngle(), -kLargeTurn);
  log_.Clear();
  Hit(kRight);  // a new strategy
  EXPECT_EQ(TurnAngle(), kSmallTurn);
  EXPECT_THAT(log_.Lines(), SizeIs(1));
  EXPECT_EQ(SignedCount(), 1);
}

TEST_F(CollisionHistoryTest, ResetOpensTheHistoryForAnyStamp) {
  history_.Add(EventAt(kLastTime, kLeft));
  history_.Reset();
  history_.Add(EventAt(ros::Time(0, 0), kLeft));
  EXPECT_EQ(SignedCount(), -1);
}

// A plain second implementation of the contact rules.
struct Model {
  std::vector<CollisionEvent> events;
  int count = 0;
  int left = 0;
  int right = 0;
  bool is_new = false;
  bool trigger = false;
  EventDirection direction = EventDirection::None;
  int strategy = 0;
  double angle = 0.0;

  static double Seconds(const ros::Time& stamp) { return stamp.sec + 1e-9 * stamp.nsec; }

  void Turn(EventDirection side) {
    if (strategy == 0) {
      strategy = side == EventDirection::Center || side == EventDirection::Right ? 1 : 2;
      angle = strategy == 1 ? kSmallTurn : -kSmallTurn;
    } else {
      const EventDirection towards = strategy == 1 ? EventDirection::Left : EventDirection::Right;
      angle = (strategy == 1 ? 1 : -1) * (side == towards ? kLargeTurn : kSmallTurn);
    }
  }

  void Trigger(EventDirection side) {
    trigger = true;
    direction = side;
    Turn(side);
  }

  void Add(const CollisionEvent& event) {
    if (!events.empty() && Seconds(event.stamp) - Seconds(events.back().stamp) < 0.3) {
      return;
    }
    events.push_back(event);
    if (events.size() > 10) {
      events.erase(events.begin());
    }
    is_new = is_new || event.type != 0;
    EventDirection side = EventDirection::None;
    if (event.type == 1) {
      side = EventDirection::Left;
      left = (left + 1) % 256;
      right = 0;
    } else if (event.type == 2) {
      side = EventDirection::Right;
      left = 0;
      right = (right + 1) % 256;
    } else if (event.type == 3) {
      side = EventDirection::Center;
      if (left != 0) {
        right = (right + 1) % 256;
      } else if (right != 0) {
        left = 1;
      } else {
        right = 1;
      }
    }
    count = (count + (side == EventDirection::None ? 0 : 1)) % 256;
    Trigger(side);
  }

  bool Fetch(const ros::Time& now) {
    if (!is_new || events.empty() || !events.back().collided) {
      return false;
    }
    is_new = (now - events.back().stamp).toSec() <= 0.2;
    return is_new;
  }

  void Reset() {
    const double kept = angle;
    *this = Model();
    angle = kept;
  }
};

bool Same(const CollisionEvent& a, const CollisionEvent& b) {
  return a.collided == b.collided && a.stamp == b.stamp && a.type == b.type;
}

enum class Step { kAddEvent, kAddMask, kAddSignal, kTurn, kCollision, kEvent, kFetch, kLast, kPop, kReset };

Step AnyStep() {
  return *rc::gen::weightedElement<Step>({{12, Step::kAddEvent},
                                          {2, Step::kAddMask},
                                          {1, Step::kAddSignal},
                                          {1, Step::kTurn},
                                          {2, Step::kCollision},
                                          {2, Step::kEvent},
                                          {3, Step::kFetch},
                                          {1, Step::kLast},
                                          {1, Step::kPop},
                                          {1, Step::kReset}});
}

RC_GTEST_FIXTURE_PROP(CollisionHistoryTest, AgreesWithAPlainModel, ()) {
  Model model;
  const int steps = *rc::gen::inRange(1, 120).as("steps");
  for (int i = 0; i < steps; ++i) {
    Wait(*rc::gen::element(0.0, 0.05, 0.1, 0.2, 0.25, 0.3, 0.31, 1.0));
    switch (AnyStep()) {
      case Step::kAddEvent: {
        const ros::Time stamp = ros::Time::now() - ros::Duration(*rc::gen::element(0.0, 0.0, 0.1, 0.2, 0.3, 5.0));
        const CollisionEvent event = EventAt(stamp, *rc::gen::element<std::int8_t>(0, 1, 1, 2, 2, 3, 3, 4, -1),
                                             *rc::gen::element(true, true, false));
        history_.Add(event);
        model.Add(event);
        break;
      }
      case Step::kAddMask: {
        const auto mask = *rc::gen::arbitrary<std::int8_t>();
        history_.Add(mask);
        if (const EventDirection side = DirectionOfMask(static_cast<unsigned int>(mask));
            side != EventDirection::None) {
          model.Trigger(side);
        }
        break;
      }
      case Step::kAddSignal:
        history_.Add(true);
        model.Trigger(EventDirection::Center);
        break;
      case Step::kTurn: {
        const auto side = static_cast<EventDirection>(*rc::gen::inRange(0, 5));
        history_.CalculateTurnAngle(side);
        model.Turn(side);
        break;
      }
      case Step::kCollision: {
        RC_ASSERT(SignedCount() == (model.left != 0 ? -model.count : model.right != 0 ? model.count : kUntouched));
        model.trigger = model.trigger && !model.is_new;
        model.is_new = false;
        break;
      }
      case Step::kEvent: {
        double angle = 0.0;
        RC_ASSERT(history_.ProcessNewEvent(angle) == model.trigger);
        RC_ASSERT(angle == model.angle);
        model.trigger = false;
        break;
      }
      case Step::kFetch:
        RC_ASSERT(history_.FetchCollision() == model.Fetch(ros::Time::now()));
        break;
      case Step::kLast:
        RC_ASSERT(Same(history_.GetLastCollision(), model.events.empty() ? CollisionEvent{} : model.events.back()));
        break;
      case Step::kPop: {
        CollisionEvent event;
        RC_ASSERT(history_.TryPopCollisionEvent(event) == !model.events.empty());
        if (!model.events.empty()) {
          RC_ASSERT(Same(event, model.events.front()));
          model.events.erase(model.events.begin());
        }
        break;
      }
      case Step::kReset:
        history_.Reset();
        model.Reset();
        break;
    }
    RC_ASSERT(history_.IsTriggerEvent() == model.trigger);
    RC_ASSERT(history_.GetEventDirection() == (model.trigger ? model.direction : EventDirection::None));
    RC_ASSERT(history_.IsLeft() == (model.left != 0));
    RC_ASSERT(history_.ShouldAbort() == (model.count > 9));
  }
}

// Whether `work` ends on a thread of its own within `timeout`; a thread that is stuck is left behind.
bool EndsElsewhere(std::function<void()> work, std::chrono::milliseconds timeout) {
  std::packaged_task<void()> task(std::move(work));
  const std::future<void> done = task.get_future();
  std::thread(std::move(task)).detach();
  return done.wait_for(timeout) == std::future_status::ready;
}

constexpr std::chrono::milliseconds kLong(5000);
constexpr std::chrono::milliseconds kShort(50);

TEST_F(CollisionHistoryTest, EveryOperationLeavesTheMutexFree) {
  const auto history = std::make_shared<CollisionHistory>();
  CollisionEvent event;
  int count = 0;
  double angle = 0.0;
  const std::vector<std::function<void()>> operations = {
      [&] { history->Add(EventAt(ros::Time(100, 0), kLeft)); },
      [&] { history->Add(EventAt(ros::Time(100, 0), kLeft)); },  // dropped
      [&] { history->Add(EventAt(ros::Time(105, 0), 77)); },
      [&] { history->Add(std::int8_t{3}); },
      [&] { history->Add(true); },
      [&] { history->CalculateTurnAngle(EventDirection::Left); },
      [&] { history->FetchCollision(); },
      [&] { SetNow(kLastTime); },
      [&] { history->FetchCollision(); },
      [&] { history->FetchCollision(); },
      [&] { history->GetLastCollision(); },
      [&] { history->ProcessNewCollision(count); },
      [&] { history->ProcessNewEvent(angle); },
      [&] { history->TryPopCollisionEvent(event); },
      [&] { history->TryPopCollisionEvent(event); },
      [&] { history->TryPopCollisionEvent(event); },  // empty
      [&] { history->FetchCollision(); },
      [&] { history->Reset(); }};
  for (std::size_t i = 0; i < operations.size(); ++i) {
    operations[i]();
    ASSERT_TRUE(EndsElsewhere([history] { history->GetLastCollision(); }, kLong)) << "after operation " << i;
  }
}

// The line of a chosen strategy is logged inside a locked Add: its hook runs while the lock is held.
class DuringALockedAdd : public SimTimeTest {
 protected:
  void WhileAdding(const std::function<void()>& look) {
    int calls = 0;
    log_.OnLine([&](const LogLine&) {
      ++calls;
      look();
    });
    history_->Add(EventAt(ros::Time::now(), kLeft));
    log_.OnLine({});
    EXPECT_EQ(calls, 1);
  }

  LogCapture log_;
  std::shared_ptr<CollisionHistory> history_ = std::make_shared<CollisionHistory>();
};

TEST_F(DuringALockedAdd, TheFiveLockedOperationsWait) {
  const std::vector<std::function<void(CollisionHistory&)>> operations = {
      [](CollisionHistory& history) { history.Add(EventAt(ros::Time(50, 0), kRight)); },
      [](CollisionHistory& history) { history.FetchCollision(); },
      [](CollisionHistory& history) { history.GetLastCollision(); },
      [](CollisionHistory& history) {
        CollisionEvent event;
        history.TryPopCollisionEvent(event);
      },
      [](CollisionHistory& history) { history.Reset(); }};
  for (std::size_t i = 0; i < operations.size(); ++i) {
    history_ = std::make_shared<CollisionHistory>();
    const auto ended = std::make_shared<std::promise<void>>();
    std::future<void> done = ended->get_future();
    WhileAdding([&] {
      std::thread([history = history_, operation = operations[i], ended] {
        operation(*history);
        ended->set_value();
      }).detach();
      EXPECT_EQ(done.wait_for(kShort), std::future_status::timeout) << "operation " << i;
    });
    EXPECT_EQ(done.wait_for(kLong), std::future_status::ready) << "operation " << i;
  }
}

TEST_F(DuringALockedAdd, TheOthersGoOn) {
  WhileAdding([&] {
    EXPECT_TRUE(history_->IsTriggerEvent());
    EXPECT_EQ(history_->GetEventDirection(), EventDirection::Left);
    EXPECT_FALSE(history_->ShouldAbort());
    EXPECT_TRUE(history_->IsLeft());
    double angle = 0.0;
    EXPECT_TRUE(history_->ProcessNewEvent(angle));
    int count = 0;
    EXPECT_TRUE(history_->ProcessNewCollision(count));
    EXPECT_EQ(count, -1);
    history_->CalculateTurnAngle(EventDirection::Right);
    history_->Add(true);
    EXPECT_EQ(history_->GetEventDirection(), EventDirection::Center);
  });
  EXPECT_TRUE(EndsElsewhere([history = history_] { history->GetLastCollision(); }, kLong));
}

// The others that log: their lines come without the lock.
TEST_F(CollisionHistoryTest, MaskSignalAndStrategyDoNotTakeTheLock) {
  const std::vector<std::function<void(CollisionHistory&)>> operations = {
      [](CollisionHistory& history) { history.Add(std::int8_t{1}); },
      [](CollisionHistory& history) { history.Add(true); },
      [](CollisionHistory& history) { history.CalculateTurnAngle(EventDirection::Left); }};
  for (std::size_t i = 0; i < operations.size(); ++i) {
    const auto history = std::make_shared<CollisionHistory>();
    int lines = 0;
    log_.OnLine([&](const LogLine&) {
      ++lines;
      EXPECT_TRUE(EndsElsewhere([history] { history->GetLastCollision(); }, kLong)) << "operation " << i;
    });
    operations[i](*history);
    EXPECT_GT(lines, 0) << "operation " << i;
  }
  log_.OnLine({});
}

TEST_F(CollisionHistoryTest, ContactsMayArriveFromAnotherThread) {
  constexpr std::uint32_t kContacts = 20000;
  std::atomic<bool> finished{false};
  std::thread sensor([&] {
    for (std::uint32_t i = 0; i < kContacts; ++i) {
      history_.Add(EventAt(ros::Time(1000 + i, 0), static_cast<std::int8_t>(i % 5)));
    }
    finished = true;
  });
  std::uint32_t last_second = 0;
  std::uint32_t last_popped = 0;
  for (std::uint32_t i = 0; !finished; ++i) {
    history_.FetchCollision();
    const std::uint32_t second = history_.GetLastCollision().stamp.sec;
    EXPECT_TRUE(second == 0 || second >= last_second);
    last_second = std::max(last_second, second);
    CollisionEvent event;
    if (history_.TryPopCollisionEvent(event)) {
      EXPECT_GT(event.stamp.sec, last_popped);
      last_popped = event.stamp.sec;
    }
    if (i % 16 == 0) {
      history_.Reset();
    }
  }
  sensor.join();
  const std::vector<CollisionEvent> rest = PopAll();
  EXPECT_LE(rest.size(), 10u);
  for (std::size_t i = 1; i < rest.size(); ++i) {
    EXPECT_EQ(rest[i].stamp.sec, rest[i - 1].stamp.sec + 1);
  }
}

}  // namespace
}  // namespace controller_base_test
