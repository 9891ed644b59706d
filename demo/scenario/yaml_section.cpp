#include "demo/scenario/yaml_section.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <set>
#include <utility>

namespace controller_base_demo {
namespace {

std::string ToText(double number) {
  char text[32];
  std::snprintf(text, sizeof(text), "%g", number);
  return text;
}

std::string Describe(const Range& range) {
  const Range all;
  if (range.lowest == all.lowest && range.highest == all.highest) {
    return "a number";
  }
  if (range.highest == all.highest) {
    return "a number from " + ToText(range.lowest) + " up";
  }
  return "a number from " + ToText(range.lowest) + " to " + ToText(range.highest);
}

// What a number means is the end of its key.
std::string Unit(const std::string& key) {
  static const std::vector<std::pair<std::string, std::string>> kUnits = {
      {"_mps", " of metres per second"}, {"_deg", " of degrees"}, {"_m", " of metres"}, {"_s", " of seconds"}};
  for (const auto& [ending, unit] : kUnits) {
    if (key.size() > ending.size() && key.compare(key.size() - ending.size(), ending.size(), ending) == 0) {
      return unit;
    }
  }
  return "";
}

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

std::string Shown(const YAML::Node& node) { return node.IsScalar() ? "'" + node.Scalar() + "'" : "a list or map"; }

}  // namespace

YamlSection::YamlSection(std::string file, YAML::Node node, std::string name)
    : file_(std::move(file)), node_(std::move(node)), name_(std::move(name)) {
  if (!node_.IsMap()) {
    FailAt(node_.Mark(),
           name_.empty() ? "a scenario is made of keys and values" : "'" + name_ + "' must be made of keys and values");
  }
}

YamlSection YamlSection::Load(const std::string& file) {
  if (!std::filesystem::is_regular_file(file)) {
    throw ScenarioError(file + ": no such scenario file");
  }
  try {
    return {file, YAML::LoadFile(file), ""};
  } catch (const YAML::BadFile&) {
    throw ScenarioError(file + ": cannot be read");
  } catch (const YAML::Exception& error) {
    throw ScenarioError(file + ":" + std::to_string(error.mark.line + 1) + ": not YAML: " + error.msg);
  }
}

bool YamlSection::Has(const std::string& key) {
  known_.push_back(key);
  return node_[key].IsDefined();
}

YAML::Node YamlSection::Required(const std::string& key) {
  if (!Has(key)) {
    // A key with a wrong unit or letter is told as such, not as a missing one.
    for (const auto& entry : node_) {
      const std::string other = entry.first.as<std::string>();
      if (Stem(other) == Stem(key) || EditDistance(other, key) <= 2) {
        FailAt(entry.first.Mark(), "unknown key '" + FullName(other) + "'; it is '" + key + "'");
      }
    }
    FailAt(node_.Mark(), "the key '" + FullName(key) + "' is missing");
  }
  return node_[key];
}

double YamlSection::ToNumber(const YAML::Node& node, const std::string& key, const Range& range) const {
  double number = std::nan("");
  try {
    number = node.as<double>();
  } catch (const YAML::Exception&) {
    FailAt(node.Mark(), "'" + FullName(key) + "' must be a number" + Unit(key) + ", not " + Shown(node));
  }
  if (!(number >= range.lowest && number <= range.highest)) {
    FailAt(node.Mark(), "'" + FullName(key) + "' must be " + Describe(range) + Unit(key) + ", not " + Shown(node));
  }
  return number;
}

double YamlSection::Number(const std::string& key, const Range& range) { return ToNumber(Required(key), key, range); }

double YamlSection::Number(const std::string& key, const Range& range, double otherwise) {
  return Has(key) ? ToNumber(node_[key], key, range) : otherwise;
}

int YamlSection::Integer(const std::string& key, const Range& range, int otherwise) {
  if (!Has(key)) {
    return otherwise;
  }
  const double number = ToNumber(node_[key], key, range);
  if (number != std::floor(number)) {
    Fail(key, "must be a whole number, not " + Shown(node_[key]));
  }
  return static_cast<int>(number);
}

bool YamlSection::Flag(const std::string& key, bool otherwise) {
  if (!Has(key)) {
    return otherwise;
  }
  try {
    return node_[key].as<bool>();
  } catch (const YAML::Exception&) {
    Fail(key, "must be true or false, not " + Shown(node_[key]));
  }
}

std::string YamlSection::Text(const std::string& key) {
  const YAML::Node node = Required(key);
  if (!node.IsScalar()) {
    Fail(key, "must be a text, not " + Shown(node));
  }
  return node.Scalar();
}

std::size_t YamlSection::Word(const std::string& key, const std::vector<std::string>& words) {
  const std::string text = Text(key);
  const auto word = std::find(words.begin(), words.end(), text);
  if (word == words.end()) {
    std::string choice;
    for (const std::string& known : words) {
      choice += (choice.empty() ? "" : ", ") + known;
    }
    Fail(key, "must be one of " + choice + ", not '" + text + "'");
  }
  return static_cast<std::size_t>(word - words.begin());
}

nav_core::math::Vec2d YamlSection::ToPoint(const YAML::Node& node, const std::string& key) const {
  if (!node.IsSequence() || node.size() != 2) {
    FailAt(node.Mark(), "'" + FullName(key) + "' must be [x, y] in metres, not " + Shown(node));
  }
  return {ToNumber(node[0], key, {}), ToNumber(node[1], key, {})};
}

nav_core::math::Vec2d YamlSection::Point(const std::string& key) { return ToPoint(Required(key), key); }

std::vector<nav_core::math::Vec2d> YamlSection::Points(const std::string& key) {
  const YAML::Node node = Required(key);
  if (!node.IsSequence() || node.size() == 0) {
    Fail(key, "must be a list of points [x, y] in metres");
  }
  std::vector<nav_core::math::Vec2d> points;
  for (const YAML::Node& point : node) {
    points.push_back(ToPoint(point, key));
  }
  return points;
}

YamlSection YamlSection::Section(const std::string& key) { return {file_, Required(key), FullName(key)}; }

std::vector<YamlSection> YamlSection::Sections(const std::string& key) {
  std::vector<YamlSection> sections;
  if (!Has(key)) {
    return sections;
  }
  const YAML::Node node = node_[key];
  if (!node.IsSequence()) {
    sections.push_back({file_, node, FullName(key)});
    return sections;
  }
  for (const YAML::Node& item : node) {
    sections.push_back({file_, item, FullName(key) + "[" + std::to_string(sections.size()) + "]"});
  }
  return sections;
}

std::vector<std::string> YamlSection::Texts(const std::string& key) {
  std::vector<std::string> texts;
  if (!Has(key)) {
    return texts;
  }
  const YAML::Node node = node_[key];
  if (!node.IsSequence()) {
    Fail(key, "must be a list");
  }
  for (const YAML::Node& text : node) {
    if (!text.IsScalar()) {
      FailAt(text.Mark(), "'" + FullName(key) + "' must be a list of texts");
    }
    texts.push_back(text.Scalar());
  }
  return texts;
}

bool YamlSection::IsText(const std::string& key) { return Required(key).IsScalar(); }

void YamlSection::CheckAllKnown() const {
  std::set<std::string> seen;
  for (const auto& entry : node_) {
    if (!entry.first.IsScalar()) {
      FailAt(entry.first.Mark(), "a key must be a word");
    }
    const std::string key = entry.first.Scalar();
    if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
      FailAt(entry.first.Mark(), "unknown key '" + FullName(key) + "'" + Advice(key));
    }
    if (!seen.insert(key).second) {
      FailAt(entry.first.Mark(), "the key '" + FullName(key) + "' stands here a second time");
    }
  }
}

std::string YamlSection::Advice(const std::string& key) const {
  for (const std::string& known : known_) {
    if (Stem(known) == Stem(key) || known == Stem(key) || key == Stem(known)) {
      return "; it is '" + known + "'";
    }
  }
  const auto nearest = std::min_element(known_.begin(), known_.end(), [&](const std::string& a, const std::string& b) {
    return EditDistance(key, a) < EditDistance(key, b);
  });
  return nearest != known_.end() && EditDistance(key, *nearest) <= 2 ? "; did you mean '" + *nearest + "'?"
                                                                     : "; known here: " + Known();
}

std::string YamlSection::Known() const {
  std::string known;
  for (const std::string& key : std::set<std::string>(known_.begin(), known_.end())) {
    known += (known.empty() ? "" : ", ") + key;
  }
  return known;
}

std::string YamlSection::FullName(const std::string& key) const { return name_.empty() ? key : name_ + "." + key; }

void YamlSection::Fail(const std::string& key, const std::string& complaint) const {
  FailAt(node_[key].IsDefined() ? node_[key].Mark() : node_.Mark(), "'" + FullName(key) + "' " + complaint);
}

void YamlSection::FailAt(const YAML::Mark& mark, const std::string& complaint) const {
  const std::string line = mark.is_null() ? "" : ":" + std::to_string(mark.line + 1);
  throw ScenarioError(file_ + line + ": " + complaint);
}

}  // namespace controller_base_demo
