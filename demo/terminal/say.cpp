#include "demo/terminal/say.h"

#include "follower/printable.h"

namespace controller_base::demo {

void Say(std::FILE* out, const std::string& text) { std::fprintf(out, "%s\n", follower::Printable(text).c_str()); }

}  // namespace controller_base::demo
