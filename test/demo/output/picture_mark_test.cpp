#include "demo/output/picture_mark.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "test/support/temporary_folder.h"

namespace controller_base::demo {
namespace {

class PictureMark : public testing::Test {
 protected:
  PictureMark() { cv::imencode(".png", cv::Mat(3, 4, CV_8UC3, cv::Scalar(10, 20, 30)), png_); }

  bool IsOwn(const std::string& content) const { return IsMarkedAsOwn(folder_.Write("picture.png", content)); }
  std::string Bytes() const { return {png_.begin(), png_.end()}; }

  controller_base_test::TemporaryFolder folder_;
  std::vector<unsigned char> png_;
};

TEST_F(PictureMark, TellsAPictureFromTheSameOneOfSomebodyElse) {
  EXPECT_FALSE(IsOwn(Bytes()));
  MarkAsOwn(&png_);
  EXPECT_TRUE(IsOwn(Bytes()));
}

TEST_F(PictureMark, LeavesThePictureAsItIs) {
  const cv::Mat before = cv::imdecode(png_, cv::IMREAD_COLOR);
  MarkAsOwn(&png_);
  const cv::Mat after = cv::imdecode(png_, cv::IMREAD_COLOR);
  ASSERT_EQ(after.size(), before.size());
  EXPECT_EQ(cv::norm(before, after), 0.0);
}

TEST_F(PictureMark, IsAChunkAsThePngFormatWantsIt) {
  MarkAsOwn(&png_);
  const std::string chunk = std::string("\0\0\0\x1dtEXtSoftware\0controller_base_demo", 37);
  const std::string bytes = Bytes();
  ASSERT_EQ(bytes.substr(33, chunk.size()), chunk);
  EXPECT_EQ(bytes.substr(33 + chunk.size(), 4), "\x57\x06\x23\x12") << "its checksum";
}

TEST_F(PictureMark, IsNotFoundInWhatIsNoPicture) {
  MarkAsOwn(&png_);
  EXPECT_FALSE(IsOwn(""));
  EXPECT_FALSE(IsOwn("notes"));
  EXPECT_FALSE(IsOwn(Bytes().substr(0, 60)));
  EXPECT_FALSE(IsOwn("x" + Bytes()));
  EXPECT_FALSE(IsMarkedAsOwn(folder_.path() / "missing.png"));
  EXPECT_FALSE(IsMarkedAsOwn(folder_.path()));
}

}  // namespace
}  // namespace controller_base::demo
