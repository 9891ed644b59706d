#ifndef CONTROLLER_BASE_DEMO_OUTPUT_OUTPUT_FOLDER_H_
#define CONTROLLER_BASE_DEMO_OUTPUT_OUTPUT_FOLDER_H_

#include <filesystem>
#include <stdexcept>
#include <string>

namespace controller_base_demo {

// A folder that cannot be made or written; what() is one line with its name.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The folder that a drive's files go to, all of them or none. A drive that is interrupted, that fails to write or that
// crashes leaves nothing half done: the files are written into a hidden folder inside, and Publish moves them out of
// it.
class OutputFolder {
 public:
  // Makes `path` with its parents where it is missing, and tries whether it can be written. Throws OutputError.
  explicit OutputFolder(const std::string& path);
  // Without Publish, removes what this object made.
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  // An empty folder to write files into. Throws OutputError.
  std::filesystem::path Begin();

  // Replaces the files of an earlier drive by those written since Begin; other files in the folder stay. Throws
  // OutputError.
  void Publish();

  // Absolute.
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::filesystem::path hidden_;   // inside path_
  std::filesystem::path created_;  // the topmost folder that was missing; empty: none, or published
};

}  // namespace controller_base_demo

#endif  // CONTROLLER_BASE_DEMO_OUTPUT_OUTPUT_FOLDER_H_
