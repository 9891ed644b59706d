#ifndef CONTROLLER_BASE_DEMO_TERMINAL_SAY_H_
#define CONTROLLER_BASE_DEMO_TERMINAL_SAY_H_

#include <cstdio>
#include <string>

namespace controller_base::demo {

// Writes `text` as one line that does nothing to a terminal (printable.h), for texts with names of files, of nodes and
// the like in them.
void Say(std::FILE* out, const std::string& text);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_TERMINAL_SAY_H_
