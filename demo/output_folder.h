#ifndef CONTROLLER_BASE_DEMO_OUTPUT_FOLDER_H_
#define CONTROLLER_BASE_DEMO_OUTPUT_FOLDER_H_

#include <filesystem>
#include <stdexcept>
#include <string>

namespace controller_base_demo {

// A folder that cannot be made or written; what() is one line with its name.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The folder that a drive's files go to, all of them or none: they are written into a hidden folder inside, and Publish
// moves them out of it. Without Publish nothing stays behind, not even a folder that this object made.
class OutputFolder {
 public:
  // Makes `path` with its parents where it is missing. Throws OutputError.
  explicit OutputFolder(const std::string& path);
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  // Where to write a file of that name.
  std::string File(const std::string& name) const { return (hidden_ / name).string(); }

  // Replaces the files of an earlier drive by the new ones; other files in the folder stay. Throws OutputError.
  void Publish();

  // Absolute.
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::filesystem::path hidden_;
  std::filesystem::path created_;  // the topmost folder that was missing; empty: none
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_OUTPUT_FOLDER_H_
