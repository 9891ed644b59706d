#include "demo/judge/expectation.h"

#include <algorithm>
#include <iterator>

#include "follower/format.h"

namespace controller_base::demo {
namespace {

bool Matches(const follower::Event& event, const ExpectedEvent& expected) {
  return Name(event.kind) == expected.kind && event.text.find(expected.text) != std::string::npos;
}

std::string Name(const ExpectedEvent& event) {
  return "'" + event.kind + "'" + (event.text.empty() ? "" : " with \"" + event.text + "\"");
}

std::string Times(int count) {
  constexpr const char* kWords[] = {"never", "once", "twice"};
  return count < static_cast<int>(std::size(kWords)) ? kWords[count] : follower::Format("%d times", count);
}

// "at least twice"
std::string Wanted(const Expectation& expectation) {
  std::string least = "at least " + Times(expectation.fewest_contacts);
  std::string most = (expectation.most_contacts > 0 ? "at most " : "") + Times(expectation.most_contacts);
  if (expectation.most_contacts == std::numeric_limits<int>::max()) {
    return least;
  }
  return expectation.fewest_contacts == 0 ? most : least + " and " + most;
}

void CheckEvents(const Expectation& expectation, const simulation::DriveRecord& drive,
                 std::vector<std::string>* unmet) {
  auto next = drive.events.begin();
  for (const ExpectedEvent& expected : expectation.events) {
    next =
        std::find_if(next, drive.events.end(), [&](const follower::Event& event) { return Matches(event, expected); });
    if (next == drive.events.end()) {
      unmet->push_back("no event " + Name(expected) + " after those expected before it");
      break;
    }
    ++next;
  }
  for (const ExpectedEvent& expected : expectation.never) {
    const auto found = std::find_if(drive.events.begin(), drive.events.end(),
                                    [&](const follower::Event& event) { return Matches(event, expected); });
    if (found != drive.events.end()) {
      unmet->push_back("there was an event " + Name(expected) + ": " + found->text);
    }
  }
}

}  // namespace

std::vector<std::string> Unmet(const Expectation& expectation, const simulation::DriveRecord& drive) {
  const Verdict verdict = Judge(drive);
  std::vector<std::string> unmet;
  if (expectation.outcome && *expectation.outcome != verdict.outcome) {
    unmet.push_back("another outcome: " + verdict.text);
  }
  for (const std::string& reason : expectation.reasons) {
    if (verdict.text.find(reason) == std::string::npos) {
      unmet.push_back("the verdict does not say \"" + reason + "\": " + verdict.text);
    }
  }
  const double end = drive.trajectory.empty() ? 0.0 : drive.trajectory.back().time;
  if (end > expectation.latest_end) {
    unmet.push_back(follower::Format("it took %.2f s, longer than %.10g s", end, expectation.latest_end));
  }
  if (drive.contacts < expectation.fewest_contacts || drive.contacts > expectation.most_contacts) {
    unmet.push_back((drive.contacts > 0 ? "something was touched " + Times(drive.contacts) : "nothing was touched") +
                    ", expected: " + Wanted(expectation));
  }
  CheckEvents(expectation, drive, &unmet);
  return unmet;
}

}  // namespace controller_base::demo
