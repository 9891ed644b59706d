#ifndef CONTROLLER_BASE_DEMO_SCENARIO_YAML_SECTION_H_
#define CONTROLLER_BASE_DEMO_SCENARIO_YAML_SECTION_H_

#include <yaml-cpp/yaml.h>

#include <cstddef>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "nav_core/math/vec2d.h"

namespace controller_base::demo {

// A scenario file that makes no sense; what() is one line: FILE:LINE: what is wrong with which key.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Range {
  double lowest = -std::numeric_limits<double>::max();
  double highest = std::numeric_limits<double>::max();
};

constexpr Range kCoordinate{-1e6, 1e6};  // m; farther away than any map that is driven on

// A text of a list, and where it stands.
struct PlacedText {
  std::string text;
  std::string place;  // "FILE:LINE"
};

using Keys = std::vector<std::string>;

// The keys and values of one YAML map. Each key must be one of those that the section is opened with, and stand there
// once. Every operation throws ScenarioError.
class YamlSection {
 public:
  static YamlSection Load(const std::string& file, const Keys& keys);

  bool Has(const std::string& key) const { return entries_.count(key) > 0; }
  // Whether the value is a plain word and no map or list; the key must be there.
  bool IsText(const std::string& key) const { return Required(key).value.IsScalar(); }
  // Whether the value has keys and values of its own; the key must be there.
  bool IsSection(const std::string& key) const { return Required(key).value.IsMap(); }
  // "FILE:LINE: 'KEY'": where the value stands, or its section where the key is missing.
  std::string Place(const std::string& key) const;
  // The same for each item of a list.
  std::vector<std::string> ItemPlaces(const std::string& key) const;

  // The key must be there.
  double Number(const std::string& key, const Range& range) const;
  double Number(const std::string& key, const Range& range, double otherwise) const;
  int Integer(const std::string& key, const Range& range, int otherwise) const;
  bool Flag(const std::string& key, bool otherwise) const;
  // Not empty.
  std::string Text(const std::string& key) const;
  // One of `words`; returns its place among them.
  std::size_t Word(const std::string& key, const std::vector<std::string>& words) const;
  // [x, y] in metres, and a list of those.
  nav_core::math::Vec2d Point(const std::string& key) const;
  std::vector<nav_core::math::Vec2d> Points(const std::string& key) const;
  YamlSection Section(const std::string& key, const Keys& keys) const;
  // A list of maps, or one map; empty when the key is missing.
  std::vector<YamlSection> Sections(const std::string& key, const Keys& keys) const;
  // A list of texts that are not empty; empty when the key is missing.
  std::vector<PlacedText> Texts(const std::string& key) const;

  [[noreturn]] void Fail(const std::string& key, const std::string& complaint) const;

 private:
  struct Entry {
    YAML::Mark place;  // of the value; of the key where there is no value
    YAML::Node value;
  };

  YamlSection(std::string file, const YAML::Node& node, const YAML::Mark& place, std::string name, const Keys& keys);

  void AddEntry(const YAML::Node& key, const YAML::Node& value, const Keys& keys);
  const Entry& Required(const std::string& key) const;
  // A list of at most kMostItems.
  const YAML::Node& List(const std::string& key, const std::string& wanted) const;
  double ToNumber(const Entry& entry, const std::string& key, const Range& range, const char* kind) const;
  nav_core::math::Vec2d ToPoint(const YAML::Node& node, const std::string& key) const;
  [[noreturn]] void FailAt(const YAML::Mark& mark, const std::string& complaint) const;
  std::string PlaceOf(const YAML::Mark& mark) const;
  std::string FullName(const std::string& key) const;

  std::string file_;
  std::string name_;  // such as "obstacles[0]"; empty for the file's own keys
  YAML::Mark place_;
  std::map<std::string, Entry> entries_;
};

// "; it is 'length_m'" and the like: what is likely meant by a word that is none of `known`, or all of those.
std::string Advice(const std::string& word, const std::vector<std::string>& known);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_SCENARIO_YAML_SECTION_H_
