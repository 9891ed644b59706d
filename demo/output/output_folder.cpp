#include "demo/output/output_folder.h"

#include <unistd.h>

#include <system_error>

namespace controller_base_demo {
namespace {

namespace fs = std::filesystem;

// The topmost part of `path` that does not exist; empty when all of it does.
fs::path FirstMissing(const fs::path& path) {
  fs::path part;
  for (const fs::path& name : path) {
    part /= name;
    std::error_code error;
    if (!fs::exists(part, error)) {
      return part;
    }
  }
  return {};
}

// Nothing happens for an empty or missing path.
void RemoveAll(const fs::path& path) {
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

[[noreturn]] void Fail(const fs::path& path, const std::error_code& error) {
  throw OutputError("cannot write into the folder " + path.string() + ": " + error.message());
}

// Pictures of events are numbered and named, so an earlier drive may have left others than this one replaces.
void RemoveEventPictures(const fs::path& folder) {
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("event-", 0) == 0 && entry.path().extension() == ".png") {
      fs::remove(entry.path());
    }
  }
}

}  // namespace

OutputFolder::OutputFolder(const std::string& path) {
  std::error_code error;
  path_ = fs::absolute(path, error).lexically_normal();
  if (path.empty() || error) {
    throw OutputError("the output folder '" + path + "' has no usable name");
  }
  created_ = FirstMissing(path_);
  hidden_ = path_ / (".partial-" + std::to_string(getpid()));
  try {
    fs::remove(Begin());
  } catch (const OutputError&) {
    RemoveAll(created_);
    throw;
  }
}

fs::path OutputFolder::Begin() {
  std::error_code error;
  fs::create_directories(hidden_, error);
  if (error) {
    Fail(path_, error);
  }
  return hidden_;
}

OutputFolder::~OutputFolder() {
  RemoveAll(hidden_);
  RemoveAll(created_);
}

void OutputFolder::Publish() {
  try {
    RemoveEventPictures(path_);
    for (const fs::directory_entry& entry : fs::directory_iterator(hidden_)) {
      fs::rename(entry.path(), path_ / entry.path().filename());
    }
  } catch (const fs::filesystem_error& error) {
    Fail(path_, error.code());
  }
  created_.clear();
}

}  // namespace controller_base_demo
