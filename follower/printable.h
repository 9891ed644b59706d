#ifndef CONTROLLER_BASE_FOLLOWER_PRINTABLE_H_
#define CONTROLLER_BASE_FOLLOWER_PRINTABLE_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace controller_base::follower {

// A text from elsewhere (a file, another node) as one line that does nothing to a terminal: control characters, line
// ends, marks that change the direction of writing, and bytes that are no UTF-8 become "\x1b" and the like. What has
// more than `longest` bytes then is cut off and ends with "...".
std::string Printable(std::string_view text, std::size_t longest = std::string::npos);

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_PRINTABLE_H_
