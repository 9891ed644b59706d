#include "demo/programs/command_line.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace controller_base::demo {
namespace {

// Null where there is none of that name.
const Option* Find(const std::vector<Option>& options, const std::string& name) {
  const auto found =
      std::find_if(options.begin(), options.end(), [&](const Option& option) { return option.name == name; });
  return found == options.end() ? nullptr : &*found;
}

void Set(const std::vector<Option>& options, const std::string& name, const std::string& value) {
  const Option* const option = Find(options, name);
  if (option == nullptr || !option->has_value) {
    throw OptionError("unknown option '" + name + "'; --help shows the known ones");
  }
  option->set(value);
}

// Reads the option at `arguments[i]`; returns how many arguments it takes.
std::size_t ReadOption(const std::vector<std::string>& arguments, std::size_t i, const std::vector<Option>& options) {
  const std::string& argument = arguments[i];
  const Option* const option = Find(options, argument);
  if (option != nullptr && !option->has_value) {
    option->set({});
    return 1;
  }
  const std::size_t equals = argument.find('=');
  if (equals != std::string::npos) {
    Set(options, argument.substr(0, equals), argument.substr(equals + 1));
    return 1;
  }
  if (i + 1 == arguments.size()) {
    throw OptionError("'" + argument + "' is not a known option, or lacks its value; --help shows the known ones");
  }
  Set(options, argument, arguments[i + 1]);
  return 2;
}

}  // namespace

bool AsksForHelp(const std::string& argument) { return argument == "--help" || argument == "-h"; }

bool ReadOptions(const std::vector<std::string>& arguments, const std::vector<Option>& options) {
  for (std::size_t i = 0; i < arguments.size();) {
    if (AsksForHelp(arguments[i])) {
      return false;
    }
    i += ReadOption(arguments, i, options);
  }
  return true;
}

std::uint32_t ParseCount(const std::string& option, const std::string& text, std::uint32_t lowest,
                         std::uint32_t highest) {
  const bool is_number = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  const double value = is_number ? std::strtod(text.c_str(), nullptr) : -1.0;
  if (value < lowest || value > highest) {
    throw OptionError(option + " wants a whole number from " + std::to_string(lowest) + " to " +
                      std::to_string(highest) + ", not '" + text + "'");
  }
  return static_cast<std::uint32_t>(value);
}

std::string ParseName(const std::string& option, const std::string& text, const std::string& kind) {
  if (text.empty()) {
    throw OptionError(option + " wants the name of " + kind);
  }
  return text;
}

simulation::Conditions ParseConditions(const std::string& option, const std::string& text) {
  if (text != "kind" && text != "harsh") {
    throw OptionError(option + " is kind or harsh, not '" + text + "'");
  }
  return text == "kind" ? simulation::Conditions::kKind : simulation::Conditions::kHarsh;
}

std::vector<double> ParseNumbers(const std::string& option, const std::string& text, std::size_t count) {
  std::vector<double> numbers;
  const char* rest = text.c_str();
  while (true) {
    char* end = nullptr;
    numbers.push_back(std::strtod(rest, &end));
    const bool is_number = end != rest && std::isfinite(numbers.back());
    if (is_number && *end == ',' && numbers.size() < count) {
      rest = end + 1;
    } else if (is_number && *end == '\0' && numbers.size() == count) {
      return numbers;
    } else {
      throw OptionError(option + " wants " + std::to_string(count) + " numbers with commas between them, not '" + text +
                        "'");
    }
  }
}

}  // namespace controller_base::demo
