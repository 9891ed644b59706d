#include "demo/terminal/log_lines.h"

#include <ros/console.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <string>
#include <utility>

#include "follower/printable.h"

namespace controller_base::demo {
namespace {

constexpr std::size_t kLongestMessage = 500;  // bytes

// A part of the format, which sees the message only as printable text.
class PrintableToken : public ros::console::Token {
 public:
  explicit PrintableToken(ros::console::TokenPtr token) : token_(std::move(token)) {}

  std::string getString(void* logger, ros::console::Level level, const char* message, const char* file,
                        const char* function, int line) override {
    return token_->getString(logger, level, follower::Printable(message, kLongestMessage).c_str(), file, function,
                             line);
  }

 private:
  ros::console::TokenPtr token_;
};

}  // namespace

void MakeLogLinesPrintable() {
  for (ros::console::TokenPtr& token : ros::console::g_formatter.tokens_) {
    token = boost::make_shared<PrintableToken>(token);
  }
}

}  // namespace controller_base::demo
