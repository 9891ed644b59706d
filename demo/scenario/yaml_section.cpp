#include "demo/scenario/yaml_section.h"

#include <yaml-cpp/depthguard.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <utility>

#include "follower/format.h"
#include "follower/printable.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLargestFile = 1U << 20U;  // bytes
constexpr std::size_t kMostItems = 10'000;          // of a list
constexpr std::size_t kLongestQuote = 60;           // bytes of a key or value in a complaint

struct Unit {
  const char* ending;  // of a key
  const char* name;
};
constexpr Unit kUnits[] = {
    {"_mps", " of metres per second"}, {"_deg", " of degrees"}, {"_m", " of metres"}, {"_s", " of seconds"}};

bool EndsWith(const std::string& text, const std::string& ending) {
  return text.size() > ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

// What a number means is the end of its key.
std::string UnitOf(const std::string& key) {
  for (const Unit& unit : kUnits) {
    if (EndsWith(key, unit.ending)) {
      return unit.name;
    }
  }
  return "";
}

// " from 0 to 86400"; nothing where every number will do.
std::string Describe(const Range& range) {
  const Range all;
  return range.lowest == all.lowest && range.highest == all.highest
             ? ""
             : follower::Format(" from %.10g to %.10g", range.lowest, range.highest);
}

// Without its unit.
std::string Stem(const std::string& key) { return key.substr(0, key.rfind('_')); }

// The letters to change, add or drop to make one word of the other, as V. Levenshtein counts them.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) {
    row[j] = j;
  }
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      diagonal = above;
    }
  }
  return row.back();
}

std::string Quoted(const std::string& text) { return "'" + follower::Printable(text, kLongestQuote) + "'"; }

// A word without quotes and without a tag of its own: in quotes, a number is a text.
bool IsPlain(const YAML::Node& node) { return node.IsScalar() && node.Tag() == "?"; }

std::string Shown(const YAML::Node& node) {
  return node.IsScalar() ? Quoted(node.Scalar()) : node.IsNull() ? "nothing" : node.IsMap() ? "a map" : "a list";
}

// Likewise where a text is none of what will do.
std::string ShownWithKind(const YAML::Node& node) {
  return (node.IsScalar() && !IsPlain(node) ? "the text " : "") + Shown(node);
}

std::string Joined(const std::vector<std::string>& words) {
  std::string joined;
  for (const std::string& word : words) {
    joined += (joined.empty() ? "" : ", ") + word;
  }
  return joined;
}

// The only document of a file.
YAML::Node LoadOne(const std::string& file) {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) {
    throw ScenarioError(file + (fs::exists(file, error) ? ": not a file" : ": no such scenario file"));
  }
  if (fs::file_size(file, error) > kLargestFile) {
    throw ScenarioError(file + follower::Format(": no scenario: it has more than %ju bytes", kLargestFile));
  }
  std::ifstream in(file);
  if (!in) {
    throw ScenarioError(file + ": cannot be read");
  }
  const std::vector<YAML::Node> documents = YAML::LoadAll(in);
  if (documents.empty()) {
    throw ScenarioError(file + ":1: a scenario is made of keys and values; this file is empty");
  }
  if (documents.size() > 1) {
    throw ScenarioError(
        file + follower::Format(":%d: a second document begins; a scenario is one", documents[1].Mark().line + 1));
  }
  return documents.front();
}

}  // namespace

std::string Advice(const std::string& word, const std::vector<std::string>& known) {
  for (const std::string& key : known) {
    if (!UnitOf(key).empty() && (Stem(key) == Stem(word) || Stem(key) == word)) {
      return "; it is '" + key + "'";
    }
  }
  const auto nearest = std::min_element(known.begin(), known.end(), [&](const std::string& a, const std::string& b) {
    return EditDistance(word, a) < EditDistance(word, b);
  });
  const std::size_t nearby = std::max<std::size_t>(1, word.size() / 3);  // letters
  return nearest != known.end() && EditDistance(word, *nearest) <= nearby ? "; did you mean '" + *nearest + "'?"
                                                                          : "; known here: " + Joined(known);
}

YamlSection::YamlSection(std::string file, const YAML::Node& node, const YAML::Mark& place, std::string name,
                         const Keys& keys)
    : file_(std::move(file)), name_(std::move(name)), place_(place) {
  if (!node.IsMap()) {
    FailAt(place, (name_.empty() ? "a scenario is" : "'" + name_ + "' must be") + " made of keys and values, not " +
                      Shown(node));
  }
  for (const auto& entry : node) {
    AddEntry(entry.first, entry.second, keys);
  }
}

YamlSection YamlSection::Load(const std::string& file, const Keys& keys) {
  try {
    const YAML::Node root = LoadOne(file);
    return {file, root, root.Mark(), "", keys};
  } catch (const YAML::DeepRecursion& error) {
    throw ScenarioError(file + follower::Format(":%d: nested too deeply for a scenario", error.mark.line + 1));
  } catch (const YAML::Exception& error) {
    throw ScenarioError(file + follower::Format(":%d: not YAML: ", error.mark.line + 1) +
                        follower::Printable(error.msg));
  }
}

void YamlSection::AddEntry(const YAML::Node& key, const YAML::Node& value, const Keys& keys) {
  if (!key.IsScalar()) {
    FailAt(key.Mark(), "a key must be a word, not " + Shown(key));
  }
  const std::string& word = key.Scalar();
  if (std::find(keys.begin(), keys.end(), word) == keys.end()) {
    FailAt(key.Mark(), "unknown key " + Quoted(FullName(word)) + Advice(word, keys));
  }
  if (!entries_.insert({word, {value.IsNull() ? key.Mark() : value.Mark(), value}}).second) {
    FailAt(key.Mark(), "the key '" + FullName(word) + "' stands here a second time");
  }
}

const YamlSection::Entry& YamlSection::Required(const std::string& key) const {
  const auto entry = entries_.find(key);
  if (entry == entries_.end()) {
    FailAt(place_, "the key '" + FullName(key) + "' is missing");
  }
  return entry->second;
}

double YamlSection::ToNumber(const Entry& entry, const std::string& key, const Range& range, const char* kind) const {
  double number = std::nan("");
  const bool is_number = IsPlain(entry.value) && YAML::convert<double>::decode(entry.value, number);
  if (!is_number || !(number >= range.lowest && number <= range.highest)) {
    FailAt(entry.place, "'" + FullName(key) + "' must be " + kind + UnitOf(key) + Describe(range) + ", not " +
                            ShownWithKind(entry.value));
  }
  return number;
}

double YamlSection::Number(const std::string& key, const Range& range) const {
  return ToNumber(Required(key), key, range, "a number");
}

double YamlSection::Number(const std::string& key, const Range& range, double otherwise) const {
  return Has(key) ? Number(key, range) : otherwise;
}

int YamlSection::Integer(const std::string& key, const Range& range, int otherwise) const {
  if (!Has(key)) {
    return otherwise;
  }
  constexpr char kKind[] = "a whole number";
  const double number = ToNumber(Required(key), key, range, kKind);
  if (number != std::floor(number)) {
    Fail(key, std::string("must be ") + kKind + Describe(range) + ", not " + Shown(Required(key).value));
  }
  return static_cast<int>(number);
}

bool YamlSection::Flag(const std::string& key, bool otherwise) const {
  if (!Has(key)) {
    return otherwise;
  }
  const YAML::Node& value = Required(key).value;
  bool flag = otherwise;
  if (!IsPlain(value) || !YAML::convert<bool>::decode(value, flag)) {
    Fail(key, "must be true or false, not " + ShownWithKind(value));
  }
  return flag;
}

std::string YamlSection::Text(const std::string& key) const {
  const YAML::Node& value = Required(key).value;
  if (!value.IsScalar() || value.Scalar().empty() || value.Scalar().find('\0') != std::string::npos) {
    Fail(key, "must be a text, not " + Shown(value));
  }
  return value.Scalar();
}

std::size_t YamlSection::Word(const std::string& key, const std::vector<std::string>& words) const {
  const YAML::Node& value = Required(key).value;
  const auto word = value.IsScalar() ? std::find(words.begin(), words.end(), value.Scalar()) : words.end();
  if (word == words.end()) {
    Fail(key, "must be one of " + Joined(words) + ", not " + Shown(value));
  }
  return static_cast<std::size_t>(word - words.begin());
}

nav_core::math::Vec2d YamlSection::ToPoint(const YAML::Node& node, const std::string& key) const {
  if (!node.IsSequence() || node.size() != 2) {
    FailAt(node.Mark(), "'" + FullName(key) + "' must be [x, y] in metres, not " + Shown(node));
  }
  const auto coordinate = [&](std::size_t i) {
    return ToNumber({node[i].Mark(), node[i]}, key, kCoordinate, "a number");
  };
  return {coordinate(0), coordinate(1)};
}

nav_core::math::Vec2d YamlSection::Point(const std::string& key) const { return ToPoint(Required(key).value, key); }

const YAML::Node& YamlSection::List(const std::string& key, const std::string& wanted) const {
  const YAML::Node& list = Required(key).value;
  if (!list.IsSequence()) {
    Fail(key, "must be a list of " + wanted + ", not " + Shown(list));
  }
  if (list.size() > kMostItems) {
    Fail(key, "must be a list of " + wanted + follower::Format(", %zu at most, not of %zu", kMostItems, list.size()));
  }
  return list;
}

std::vector<nav_core::math::Vec2d> YamlSection::Points(const std::string& key) const {
  std::vector<nav_core::math::Vec2d> points;
  for (const YAML::Node& point : List(key, "points [x, y] in metres")) {
    points.push_back(ToPoint(point, key));
  }
  if (points.empty()) {
    Fail(key, "must be a list of points [x, y] in metres, one at least");
  }
  return points;
}

YamlSection YamlSection::Section(const std::string& key, const Keys& keys) const {
  const Entry& entry = Required(key);
  return {file_, entry.value, entry.place, FullName(key), keys};
}

std::vector<YamlSection> YamlSection::Sections(const std::string& key, const Keys& keys) const {
  std::vector<YamlSection> sections;
  if (!Has(key)) {
    return sections;
  }
  if (IsSection(key)) {
    sections.push_back(Section(key, keys));
    return sections;
  }
  for (const YAML::Node& item : List(key, "keys and values each")) {
    sections.push_back({file_, item, item.Mark(), FullName(key) + follower::Format("[%zu]", sections.size()), keys});
  }
  return sections;
}

std::vector<PlacedText> YamlSection::Texts(const std::string& key) const {
  std::vector<PlacedText> texts;
  if (!Has(key)) {
    return texts;
  }
  for (const YAML::Node& text : List(key, "texts")) {
    if (!text.IsScalar() || text.Scalar().empty()) {
      FailAt(text.Mark(), "'" + FullName(key) + "' must be a list of texts, and holds " + Shown(text) +
                              (text.IsMap() ? "; a text with a colon stands in quotes" : ""));
    }
    texts.push_back({text.Scalar(), PlaceOf(text.Mark())});
  }
  return texts;
}

std::string YamlSection::FullName(const std::string& key) const { return name_.empty() ? key : name_ + "." + key; }

std::string YamlSection::PlaceOf(const YAML::Mark& mark) const {
  return file_ + (mark.is_null() ? "" : follower::Format(":%d", mark.line + 1));
}

std::string YamlSection::Place(const std::string& key) const {
  return PlaceOf(Has(key) ? Required(key).place : place_) + ": '" + FullName(key) + "'";
}

std::vector<std::string> YamlSection::ItemPlaces(const std::string& key) const {
  std::vector<std::string> places;
  for (const YAML::Node& item : Required(key).value) {
    places.push_back(PlaceOf(item.Mark()) + ": '" + FullName(key) + follower::Format("[%zu]'", places.size()));
  }
  return places;
}

void YamlSection::Fail(const std::string& key, const std::string& complaint) const {
  throw ScenarioError(Place(key) + " " + complaint);
}

void YamlSection::FailAt(const YAML::Mark& mark, const std::string& complaint) const {
  throw ScenarioError(PlaceOf(mark) + ": " + complaint);
}

}  // namespace controller_base::demo
