#include <gmock/gmock.h>

#include "test/support/ros_environment.h"

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  testing::AddGlobalTestEnvironment(new controller_base_test::RosEnvironment);  // GoogleTest deletes it
  return RUN_ALL_TESTS();
}
