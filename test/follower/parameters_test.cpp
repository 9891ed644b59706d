#include "controller_base/follower/parameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

#include "follower/format.h"

namespace controller_base::follower {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// The error of CheckParameters; empty without one.
std::string Complaint(const Parameters& parameters) {
  try {
    CheckParameters(parameters);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

bool IsFlag(const ParameterField& field) { return std::holds_alternative<bool Parameters::*>(field.value); }

// Sets the field, or the only value of it.
void Set(const ParameterField& field, double value, Parameters* parameters) {
  if (const auto* number = std::get_if<double Parameters::*>(&field.value)) {
    parameters->*(*number) = value;
  } else {
    parameters->*std::get<std::vector<double> Parameters::*>(field.value) = {value};
  }
}

TEST(Parameters, TheDefaultsAreGood) { EXPECT_EQ(Complaint(Parameters()), ""); }

TEST(Parameters, EachFieldIsInTheTableOnceByItsName) {
  std::set<std::string> names;
  for (const ParameterField& field : ParameterFields()) {
    EXPECT_TRUE(names.insert(field.name).second) << field.name;
  }
  EXPECT_EQ(sizeof(Parameters), (names.size() - 1) * sizeof(double) + sizeof(std::vector<double>));
}

TEST(Parameters, EachIsHeldToItsRangeByName) {
  for (const ParameterField& field : ParameterFields()) {
    if (IsFlag(field)) {
      continue;
    }
    for (const double bad : {field.lowest - 1e-6, field.highest + 1e-6, std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity()}) {
      Parameters parameters;
      Set(field, bad, &parameters);
      EXPECT_THAT(Complaint(parameters), StartsWith(field.name)) << bad;
    }
    for (const double good : {field.lowest, field.highest}) {
      Parameters parameters;
      Set(field, good, &parameters);
      EXPECT_THAT(Complaint(parameters), testing::Not(HasSubstr("must be within"))) << field.name << ' ' << good;
    }
  }
}

TEST(Parameters, TheComplaintSaysValueRangeAndUnit) {
  Parameters parameters;
  parameters.cruise_speed = -1.0;
  EXPECT_EQ(Complaint(parameters), "cruise_speed is -1 m/s; it must be within 0.01 and 5 m/s");
}

TEST(Parameters, CorridorsRiseAndThereIsOne) {
  Parameters parameters;
  parameters.corridor_widths = {};
  EXPECT_EQ(Complaint(parameters), "corridor_widths is empty; it must have at least one value");
  parameters.corridor_widths = {1.0, 0.6};
  EXPECT_EQ(Complaint(parameters), "corridor_widths must not fall");
  parameters.corridor_widths = {1.0, 1.0};
  EXPECT_EQ(Complaint(parameters), "");
}

TEST(Parameters, TheShortestLookaheadIsNotAboveTheOther) {
  Parameters parameters;
  parameters.shortest_lookahead = 0.5;
  EXPECT_EQ(Complaint(parameters), "shortest_lookahead is above lookahead");
  parameters.lookahead = 0.5;
  EXPECT_EQ(Complaint(parameters), "");
}

// Default, unit and range of each, in docs/follower.md.
TEST(Parameters, AllAreDocumentedAsTheyAre) {
  std::ifstream file(CONTROLLER_BASE_FOLLOWER_PAGE);
  std::ostringstream text;
  text << file.rdbuf();
  const std::string page = text.str();
  const Parameters defaults;
  EXPECT_THAT(page, HasSubstr("| `latch_goal` | true | true or false | "));
  for (const ParameterField& field : ParameterFields()) {
    if (IsFlag(field)) {
      continue;
    }
    std::string row = Format("| `%s` | ", field.name);
    if (const auto* number = std::get_if<double Parameters::*>(&field.value)) {
      row += Format("%.3g", defaults.*(*number));
    } else {
      row += "0.6, 1, 1.5";
    }
    EXPECT_THAT(page, HasSubstr(row + Format(" %s | %g to %g | ", field.unit, field.lowest, field.highest)));
  }
}

}  // namespace
}  // namespace controller_base::follower
