// The figures of docs/marathon.md: the tables add up, the text says the same as the first of them, and a run that fell
// short still does. After a change of the drive, run scripts/marathon and copy its tables.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "test/demo/programs/program_run.h"

namespace controller_base_test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

using Row = std::map<std::string, std::string>;  // heading, cell

std::vector<std::string> Cells(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream stream(line.substr(1));
  for (std::string cell; std::getline(stream, cell, '|');) {
    cells.push_back(std::regex_replace(cell, std::regex("^ +| +$"), ""));
  }
  return cells;
}

// The rows of all tables whose headings begin with `beginning`.
std::vector<std::vector<Row>> Tables(const std::string& page, const std::string& beginning) {
  std::vector<std::vector<Row>> tables;
  for (std::size_t at = page.find(beginning); at != std::string::npos; at = page.find(beginning, at + 1)) {
    std::istringstream stream(page.substr(at));
    std::string line;
    std::getline(stream, line);
    const std::vector<std::string> headings = Cells(line);
    std::getline(stream, line);  // dashes
    std::vector<Row>& rows = tables.emplace_back();
    while (std::getline(stream, line) && !line.empty()) {
      const std::vector<std::string> cells = Cells(line);
      Row& row = rows.emplace_back();
      for (std::size_t i = 0; i < std::min(headings.size(), cells.size()); ++i) {
        row[headings[i]] = cells[i];
      }
    }
  }
  return tables;
}

double Number(const Row& row, const std::string& heading) { return std::stod(row.at(heading)); }

class MarathonPage : public ProgramRun {
 protected:
  const std::string page_ = ReadFile(fs::path(CONTROLLER_BASE_PAGES) / "docs/marathon.md");
  const std::vector<std::vector<Row>> maps_ = Tables(page_, "| map | worlds |");  // the last row: all of them
  const std::vector<std::vector<Row>> unclean_ = Tables(page_, "| map | seed | outcome |");
};

TEST_F(MarathonPage, TheTablesAddUp) {
  ASSERT_FALSE(maps_.empty());
  for (const std::vector<Row>& maps : maps_) {
    const Row& all = maps.back();
    EXPECT_EQ(all.at("map"), "all");
    const double roundings = 0.5 * static_cast<double>(maps.size());
    const std::map<std::string, double> figures = {
        {"worlds", 0.0},       {"reached", 0.0},     {"refused", 0.0},           {"fell short", 0.0}, {"crashed", 0.0},
        {"lethal cells", 0.0}, {"no reason", 0.0},   {"avoidable touches", 0.0}, {"contacts", 0.0},   {"detours", 0.0},
        {"km", 0.01},          {"simulated h", 0.1}, {"processor s", 1.0},       {"wall s", 1.0}};
    for (const auto& [heading, rounding] : figures) {
      double sum = 0.0;
      for (std::size_t i = 0; i + 1 < maps.size(); ++i) {
        sum += Number(maps[i], heading);
      }
      EXPECT_NEAR(sum, Number(all, heading), rounding * roundings + 1e-9) << heading;
    }
  }
}

TEST_F(MarathonPage, EveryWorldHasAnOutcome) {
  for (const std::vector<Row>& maps : maps_) {
    for (const Row& map : maps) {
      EXPECT_EQ(Number(map, "reached") + Number(map, "refused") + Number(map, "fell short") + Number(map, "crashed"),
                Number(map, "worlds"))
          << map.at("map");
    }
  }
}

TEST_F(MarathonPage, TheTextSaysWhatTheTableSays) {
  const Row& all = maps_.at(0).back();
  std::smatch text;
  ASSERT_TRUE(std::regex_search(page_, text, std::regex("\n([0-9.]+) km in ([0-9]+) worlds: ")));
  EXPECT_NEAR(std::stod(text[1]), Number(all, "km"), 0.05);
  EXPECT_EQ(std::stod(text[2]), Number(all, "worlds"));
  ASSERT_TRUE(
      std::regex_search(page_, text, std::regex("Release: ([0-9.]+) km in\\s([0-9.]+) minutes, ([0-9]+) minutes")));
  EXPECT_NEAR(std::stod(text[1]), Number(all, "km"), 0.05);
  EXPECT_NEAR(std::stod(text[2]), Number(all, "wall s") / 60.0, 0.06);
  EXPECT_NEAR(std::stod(text[3]), Number(all, "processor s") / 60.0, 0.5);
  ASSERT_TRUE(std::regex_search(page_, text, std::regex("([0-9]+) times\\sthere was no way")));
  EXPECT_EQ(std::stod(text[1]), Number(all, "refused"));
}

TEST_F(MarathonPage, SideBySideStandsWhatTheTwoTablesSay) {
  const std::vector<std::vector<Row>> both = Tables(page_, "| | kind | harsh |");
  ASSERT_EQ(both.size(), 1u);
  ASSERT_GE(both[0].size(), 10u);
  for (const Row& row : both[0]) {
    const std::string figure = row.at("");
    EXPECT_EQ(row.at("kind"), maps_.at(1).back().at(figure)) << figure;
    if (figure != "lethal cells") {  // not counted in the harsh world
      EXPECT_EQ(row.at("harsh"), maps_.at(0).back().at(figure)) << figure;
    }
  }
}

TEST_F(MarathonPage, EachRunThatWasNotCleanHasItsRow) {
  ASSERT_EQ(unclean_.size(), maps_.size());
  for (std::size_t i = 0; i < unclean_.size(); ++i) {
    const auto rows = std::count_if(unclean_[i].begin(), unclean_[i].end(),
                                    [](const Row& run) { return run.at("outcome") == "fell short"; });
    EXPECT_EQ(static_cast<double>(rows), Number(maps_[i].back(), "fell short"));
  }
}

// Rows of the first table, which shows today's follower, on the bundled map.
TEST_F(MarathonPage, ARunThatFellShortStillDoes) {
  for (const Row& run : unclean_.at(0)) {
    if (run.at("map") == "apartment") {
      Run("$DEMO --runs 1 --seed " + run.at("seed"));
      EXPECT_THAT(
          Read("runs-out/runs.csv"),
          HasSubstr("\n" + run.at("seed") + "," + run.at("outcome") + ",\"" + run.at("reason") + "\",1," +
                    run.at("contacts") + "," + run.at("avoidable touches") + "," + run.at("lethal cells") + ","));
    }
  }
}

TEST_F(MarathonPage, ItsCommandsExist) {
  const std::string usages = Run("$DEMO --help; $MARATHON --help").output;
  const std::regex command("\n    (scripts/[a-z_]+)([^\n]*)");
  int commands = 0;
  for (auto match = std::sregex_iterator(page_.begin(), page_.end(), command); match != std::sregex_iterator();
       ++match, ++commands) {
    const fs::path script = fs::path(CONTROLLER_BASE_PAGES) / (*match)[1].str();
    EXPECT_TRUE((fs::status(script).permissions() & fs::perms::owner_exec) != fs::perms::none) << script;
    const std::string arguments = (*match)[2];
    const std::regex option("--[a-z-]+");
    for (auto word = std::sregex_iterator(arguments.begin(), arguments.end(), option); word != std::sregex_iterator();
         ++word) {
      EXPECT_THAT(usages, HasSubstr("  " + word->str() + " ")) << (*match)[0];
    }
  }
  EXPECT_GE(commands, 3);
}

TEST_F(MarathonPage, TheLengthIsTheProgramsOwn) {
  const std::string usage = Run("$MARATHON --help").output;
  EXPECT_THAT(usage, HasSubstr("(42.2)"));
  EXPECT_THAT(usage, HasSubstr("(300)"));
  EXPECT_THAT(page_, HasSubstr("until 42.2 km and 300 worlds are done"));
}

}  // namespace
}  // namespace controller_base_test
