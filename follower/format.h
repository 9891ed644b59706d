#ifndef CONTROLLER_BASE_FOLLOWER_FORMAT_H_
#define CONTROLLER_BASE_FOLLOWER_FORMAT_H_

#include <cstddef>
#include <cstdio>
#include <string>

namespace controller_base::follower {

// What std::printf would print, however long.
template <typename... Args>
std::string Format(const char* format, Args... args) {
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, format, args...)), '\0');
  std::snprintf(text.data(), text.size() + 1, format, args...);
  return text;
}

}  // namespace controller_base::follower

#endif  // CONTROLLER_BASE_FOLLOWER_FORMAT_H_
