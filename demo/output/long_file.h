#ifndef CONTROLLER_BASE_DEMO_OUTPUT_LONG_FILE_H_
#define CONTROLLER_BASE_DEMO_OUTPUT_LONG_FILE_H_

#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>

#include "demo/output/output_folder.h"

namespace controller_base::demo {

// A file of an output folder that is written for hours. What is in it outlives that somebody removes the folder.
class LongFile {
 public:
  // Between the folder's Begin and Publish, in the folder that Begin gave; `folder` must outlive this object.
  LongFile(OutputFolder* folder, const std::string& name);

  std::ostream& stream() { return file_; }

  // Nothing is written afterwards. Where the file is gone, writes it again into the folder, which is made again;
  // returns whether that was so. Throws OutputError when not all of it could be written.
  bool Close();

 private:
  OutputFolder* folder_;
  std::string name_;
  std::filesystem::path path_;
  std::fstream file_;
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_OUTPUT_LONG_FILE_H_
