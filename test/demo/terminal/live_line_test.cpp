#include "demo/terminal/live_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace controller_base::demo {
namespace {

std::string Written(bool is_terminal, const std::function<void(LiveLine*)>& use) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* out = open_memstream(&text, &size);
  {
    LiveLine line(out, is_terminal);
    use(&line);
  }
  std::fclose(out);
  const std::string written(text, size);
  std::free(text);
  return written;
}

// The lines that a terminal shows at the end, and the line that the cursor is on.
std::string OnScreen(const std::string& written) {
  std::string lines;
  std::string line;
  std::size_t column = 0;
  for (std::size_t i = 0; i < written.size(); ++i) {
    if (written.compare(i, 3, "\x1b[K") == 0) {
      line.resize(column);
      i += 2;
    } else if (written[i] == '\r') {
      column = 0;
    } else if (written[i] == '\n') {
      lines += line + '\n';
      line.clear();
      column = 0;
    } else {
      line.resize(std::max(line.size(), column + 1), ' ');
      line[column++] = written[i];
    }
  }
  return lines + line;
}

TEST(LiveLine, LetsNoTextDoAnythingToTheTerminal) {
  const std::string map = "a\x1b[31m\nb";
  const auto use = [&](LiveLine* line) {
    line->Print(map);
    line->Show(map);
  };
  EXPECT_EQ(Written(false, use), "a\\x1b[31m\\x0ab\n");
  EXPECT_EQ(OnScreen(Written(true, use)), "a\\x1b[31m\\x0ab\n");
}

TEST(LiveLine, ShowsOneLineInPlaceOnATerminal) {
  const auto show_twice = [](LiveLine* line) {
    line->Show("a long line");
    line->Show("short");
    line->Print("an event");
    line->Print("another one");
  };
  const std::string written = Written(true, show_twice);
  EXPECT_EQ(OnScreen(written), "an event\nanother one\n");  // the line itself is gone with its object
  const std::string alive = written.substr(0, written.rfind(LiveLine::kEraseLine));
  EXPECT_EQ(OnScreen(alive), "an event\nanother one\nshort");
}

TEST(LiveLine, TextOfOthersThatErasesTheLineFirstStandsAlone) {
  const std::string written = Written(true, [](LiveLine* line) { line->Show("a long status line"); });
  const std::string alive = written.substr(0, written.rfind(LiveLine::kEraseLine));
  EXPECT_EQ(OnScreen(alive + LiveLine::kEraseLine + "warning\n"), "warning\n");
}

TEST(LiveLine, CutsOffWhatWouldWrap) {
  const std::string written = Written(true, [](LiveLine* line) { line->Show(std::string(500, 'x')); });
  EXPECT_EQ(std::count(written.begin(), written.end(), 'x'), 79);
}

TEST(LiveLine, WritesPlainLinesWhereThereIsNoTerminal) {
  const auto use = [](LiveLine* line) {
    line->Show("never seen");
    line->Print("an event");
    line->Show("never seen");
  };
  EXPECT_EQ(Written(false, use), "an event\n");
}

TEST(ProgressBar, IsFilledInProportion) {
  EXPECT_EQ(ProgressBar(0, 4, 8), "........");
  EXPECT_EQ(ProgressBar(1, 4, 8), "##......");
  EXPECT_EQ(ProgressBar(3, 4, 8), "######..");
  EXPECT_EQ(ProgressBar(4, 4, 8), "########");
}

TEST(ProgressBar, IsFullOnlyWhenAllIsDone) {
  EXPECT_EQ(ProgressBar(999, 1000, 10), "#########.");
  EXPECT_EQ(ProgressBar(1001, 1000, 10), "##########");
  EXPECT_EQ(ProgressBar(0, 0, 10), "##########");
}

}  // namespace
}  // namespace controller_base::demo
