#ifndef CONTROLLER_BASE_DEMO_OUTPUT_OUTPUT_FOLDER_H_
#define CONTROLLER_BASE_DEMO_OUTPUT_OUTPUT_FOLDER_H_

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "recording/output_error.h"

namespace controller_base::demo {

using recording::OutputError;

// The folder that a program's files go to: those that are written between Begin and Publish, all of them or none. They
// are written into a hidden folder inside, ".partial-" and the process's number, and Publish moves them out of it. A
// program that is interrupted, fails to write or crashes leaves nothing half done; what one that was killed has left in
// its hidden folder is removed by the next one that writes here.
//
// Nothing is removed but files that IsOwnFile knows by their names, and folders that this object made and that are
// empty.
class OutputFolder {
 public:
  // Makes `path` with its parents where it is missing, and tries whether it can be written. Throws OutputError.
  explicit OutputFolder(const std::string& path);
  // Without Publish, removes what this object made.
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  // An empty folder to write files into; makes `path` again if somebody removed it. Throws OutputError.
  std::filesystem::path Begin();
  // The same folder again, with what is in it; makes it again if somebody removed it. Throws OutputError.
  std::filesystem::path Continue();

  // Replaces the files of an earlier run by those written since Begin: files of the same name, and those of which
  // `is_outdated` holds. Others in the folder stay, also pictures of other people that have the name of an event's
  // picture: returns the names of those, whose place is not taken. Two programs that publish into one folder do it one
  // after the other. Throws OutputError.
  std::vector<std::string> Publish(const std::function<bool(const std::filesystem::path&)>& is_outdated =
                                       [](const auto&) { return false; });

  // Removes what this object made, as the destructor does. Without effect after Publish.
  void Discard();

  // Absolute.
  const std::filesystem::path& path() const { return path_; }

 private:
  void RemoveLeftovers() const;

  std::filesystem::path path_;
  std::filesystem::path hidden_;             // inside path_
  std::vector<std::filesystem::path> made_;  // folders, the outermost first; none once published
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_OUTPUT_OUTPUT_FOLDER_H_
