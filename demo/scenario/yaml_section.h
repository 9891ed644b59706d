#ifndef CONTROLLER_BASE_DEMO_SCENARIO_YAML_SECTION_H_
#define CONTROLLER_BASE_DEMO_SCENARIO_YAML_SECTION_H_

#include <yaml-cpp/yaml.h>

#include <functional>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "nav_core/math/vec2d.h"

namespace controller_base_demo {

// A scenario file that makes no sense; what() is one line: FILE:LINE: what is wrong with which key.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Range {
  double lowest = -std::numeric_limits<double>::max();
  double highest = std::numeric_limits<double>::max();
};

// The keys and values of one YAML map, by what is asked for: a key that nobody asked for is unknown. Every operation
// throws ScenarioError.
class YamlSection {
 public:
  static YamlSection Load(const std::string& file);

  // Whether the key is there; it is known from now on.
  bool Has(const std::string& key);

  // The key must be there.
  double Number(const std::string& key, const Range& range);
  double Number(const std::string& key, const Range& range, double otherwise);
  int Integer(const std::string& key, const Range& range, int otherwise);
  bool Flag(const std::string& key, bool otherwise);
  std::string Text(const std::string& key);
  // One of `words`; returns its place among them.
  std::size_t Word(const std::string& key, const std::vector<std::string>& words);
  // [x, y] in metres, and a list of those.
  nav_core::math::Vec2d Point(const std::string& key);
  std::vector<nav_core::math::Vec2d> Points(const std::string& key);
  YamlSection Section(const std::string& key);
  // A list of maps, or one map; empty when the key is missing.
  std::vector<YamlSection> Sections(const std::string& key);
  // A list of texts; empty when the key is missing.
  std::vector<std::string> Texts(const std::string& key);
  // Whether the value is a plain word and no map or list.
  bool IsText(const std::string& key);

  // Every key must have been asked for, none twice.
  void CheckAllKnown() const;

  [[noreturn]] void Fail(const std::string& key, const std::string& complaint) const;

 private:
  YamlSection(std::string file, YAML::Node node, std::string name);

  YAML::Node Required(const std::string& key);
  double ToNumber(const YAML::Node& node, const std::string& key, const Range& range) const;
  nav_core::math::Vec2d ToPoint(const YAML::Node& node, const std::string& key) const;
  [[noreturn]] void FailAt(const YAML::Mark& mark, const std::string& complaint) const;
  std::string Known() const;
  std::string Advice(const std::string& key) const;
  std::string FullName(const std::string& key) const;

  std::string file_;
  YAML::Node node_;
  std::string name_;  // such as "obstacles[0]"; empty for the file's own keys
  std::vector<std::string> known_;
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_SCENARIO_YAML_SECTION_H_
