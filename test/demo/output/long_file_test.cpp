#include "demo/output/long_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "demo/output/output_folder.h"
#include "test/support/temporary_folder.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;
using controller_base_test::ReadFile;

class LongFileTest : public testing::Test {
 protected:
  LongFileTest() : place_(temporary_.path() / "a" / "b"), folder_(place_) { folder_.Begin(); }

  controller_base_test::TemporaryFolder temporary_;
  fs::path place_;
  OutputFolder folder_;
};

TEST_F(LongFileTest, IsPublishedWithItsFolder) {
  LongFile table(&folder_, "runs.csv");
  table.stream() << "seed\n1\n";
  EXPECT_FALSE(table.Close());
  folder_.Publish();
  EXPECT_EQ(ReadFile(place_ / "runs.csv"), "seed\n1\n");
}

TEST_F(LongFileTest, OutlivesItsFolder) {
  LongFile first(&folder_, "1-hall.csv");
  LongFile second(&folder_, "runs.csv");
  first.stream() << "seed\n1\n";
  second.stream() << "seed\n2\n";
  second.stream().flush();
  fs::remove_all(temporary_.path() / "a");
  second.stream() << "3\n";
  EXPECT_TRUE(first.Close());
  EXPECT_TRUE(second.Close());
  folder_.Publish();
  EXPECT_EQ(ReadFile(place_ / "1-hall.csv"), "seed\n1\n");
  EXPECT_EQ(ReadFile(place_ / "runs.csv"), "seed\n2\n3\n");
}

TEST_F(LongFileTest, SaysThatItCannotBeWritten) {
  LongFile table(&folder_, "runs.csv");
  fs::remove_all(temporary_.path() / "a");
  temporary_.Write("a", "somebody's file");
  EXPECT_THROW(table.Close(), OutputError);
  EXPECT_EQ(ReadFile(temporary_.path() / "a"), "somebody's file");
}

}  // namespace
}  // namespace controller_base::demo
