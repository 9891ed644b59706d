#include "follower/printable.h"

#include <algorithm>
#include <cstdint>

#include "follower/format.h"

namespace controller_base::follower {
namespace {

// A character of UTF-8 and its bytes; as many as 0 where the text does not begin with one.
struct Character {
  std::uint32_t code;
  std::size_t length;
};

bool IsContinuation(unsigned char byte) { return (byte & 0xc0U) == 0x80U; }

Character First(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80U) {
    return {lead, 1};
  }
  const std::size_t length = lead >= 0xf0U ? 4 : lead >= 0xe0U ? 3 : 2;
  if (lead < 0xc2U || lead > 0xf4U || length > text.size()) {
    return {0, 0};
  }
  std::uint32_t code = lead & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (!IsContinuation(byte)) {
      return {0, 0};
    }
    code = code << 6U | (byte & 0x3fU);
  }
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};  // of so many bytes
  const bool is_surrogate = code >= 0xd800U && code <= 0xdfffU;
  return code < kSmallest[length] || code > 0x10ffffU || is_surrogate ? Character{0, 0} : Character{code, length};
}

// C0, DEL and C1; line separators, and marks that change the direction of writing.
bool IsControl(std::uint32_t code) {
  return code < 0x20U || (code >= 0x7fU && code < 0xa0U) || code == 0x200eU || code == 0x200fU ||
         (code >= 0x2028U && code <= 0x202eU) || (code >= 0x2066U && code <= 0x2069U) || code == 0xfeffU;
}

}  // namespace

std::string Printable(std::string_view text, std::size_t longest) {
  std::string printable;
  while (!text.empty()) {
    const Character character = First(text);
    const std::size_t length = std::max<std::size_t>(character.length, 1);
    std::string next(text.substr(0, length));
    if (character.length == 0 || IsControl(character.code)) {
      next.clear();
      for (const char byte : text.substr(0, length)) {
        next += Format("\\x%02x", static_cast<unsigned int>(static_cast<unsigned char>(byte)));
      }
    }
    if (printable.size() + next.size() > longest) {
      return printable + "...";
    }
    printable += next;
    text.remove_prefix(length);
  }
  return printable;
}

}  // namespace controller_base::follower
