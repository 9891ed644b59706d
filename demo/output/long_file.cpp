#include "demo/output/long_file.h"

#include <system_error>

namespace controller_base::demo {

LongFile::LongFile(OutputFolder* folder, const std::string& name)
    : folder_(folder),
      name_(name),
      path_(folder->Continue() / name),
      file_(path_, std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary) {}

bool LongFile::Close() {
  file_.flush();
  std::error_code ignored;
  const bool is_gone = file_ && !std::filesystem::exists(path_, ignored);
  if (is_gone) {
    std::ofstream again(folder_->Continue() / name_, std::ios::binary);
    file_.seekg(0);
    again << file_.rdbuf();
    again.close();
    file_.setstate(again.fail() ? std::ios::failbit : std::ios::goodbit);
  }
  file_.close();
  if (!file_) {
    throw OutputError("cannot write " + (folder_->path() / name_).string());
  }
  return is_gone;
}

}  // namespace controller_base::demo
