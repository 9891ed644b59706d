#ifndef TEST_SUPPORT_TEST_NAMES_H_
#define TEST_SUPPORT_TEST_NAMES_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace controller_base_test {

// The name of a test with a parameter like "kitchen-4": no name of a test has a hyphen.
inline std::string WithoutHyphens(const testing::TestParamInfo<std::string>& parameter) {
  std::string name = parameter.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_TEST_NAMES_H_
