#ifndef CONTROLLER_BASE_DEMO_TERMINAL_LIVE_LINE_H_
#define CONTROLLER_BASE_DEMO_TERMINAL_LIVE_LINE_H_

#include <cstddef>
#include <cstdio>
#include <string>

namespace controller_base::demo {

// The last line of a terminal, which is written again and again in place, below ordinary lines that stay.
//
//   LiveLine line(stdout);
//   line.Show("run 1 of 10");
//   line.Print("run 1: reached");  // an ordinary line above it
//   line.Show("run 2 of 10");
//
// Where the output is no terminal, Show writes nothing and Print just writes its line. Texts are made printable
// (printable.h). Belongs to one thread.
class LiveLine {
 public:
  // `out` must outlive the line.
  explicit LiveLine(std::FILE* out);
  LiveLine(std::FILE* out, bool is_terminal);
  // The line disappears.
  ~LiveLine();
  LiveLine(const LiveLine&) = delete;
  LiveLine& operator=(const LiveLine&) = delete;

  bool is_terminal() const { return is_terminal_; }

  // Replaces the line by `text`, cut off at the terminal's width. Leaves the cursor at the line's beginning, so whoever
  // else writes to the terminal overwrites it: such text had better begin with kEraseLine.
  void Show(const std::string& text);
  // An ordinary line above the live one; `text` without a line end.
  void Print(const std::string& text);

  // The terminal's code that empties the line the cursor is on.
  static constexpr char kEraseLine[] = "\r\x1b[K";

 private:
  std::size_t Width() const;
  void Write(const std::string& text);

  std::FILE* out_;
  bool is_terminal_;
  std::string text_;  // on the terminal now
};

// A bar of `width` characters, filled for `done` of `total`: "#####.....". All filled when there is nothing to do.
std::string ProgressBar(std::size_t done, std::size_t total, std::size_t width);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_TERMINAL_LIVE_LINE_H_
