#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_COMMAND_LINE_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_COMMAND_LINE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulation/harsh_world.h"

namespace controller_base::demo {

// A command line that makes no sense; what() is one line that says which argument is wrong.
class OptionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

bool AsksForHelp(const std::string& argument);

// An option of a program, "--seed" for example, and what its value sets.
struct Option {
  std::string name;
  std::function<void(const std::string& value)> set;
  bool has_value = true;  // else `set` is given an empty text
};

// Reads "--name value" and "--name=value", or "--name" of an option without a value, and sets each in its turn. False
// when an argument asks for help, "--help" or "-h"; the rest is not read then. Throws OptionError, and what `set`
// throws.
bool ReadOptions(const std::vector<std::string>& arguments, const std::vector<Option>& options);

// The whole number that `text` is, digits alone; `option` is whose value it is. Throws OptionError.
std::uint32_t ParseCount(const std::string& option, const std::string& text, std::uint32_t lowest,
                         std::uint32_t highest);

// `text`, which must not be empty: the name of `kind`, such as "a file". Throws OptionError.
std::string ParseName(const std::string& option, const std::string& text, const std::string& kind);

// "kind" or "harsh". Throws OptionError.
simulation::Conditions ParseConditions(const std::string& option, const std::string& text);

// `count` finite numbers with commas between them. Throws OptionError.
std::vector<double> ParseNumbers(const std::string& option, const std::string& text, std::size_t count);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_COMMAND_LINE_H_
