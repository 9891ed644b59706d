#include "demo/output/output_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <thread>

#include "demo/output/own_file.h"

namespace controller_base::demo {
namespace {

namespace fs = std::filesystem;

constexpr char kHiddenName[] = ".partial-";  // and the process's number

[[noreturn]] void Fail(const fs::path& path, const std::string& why) {
  throw OutputError("cannot write into the folder " + path.string() + ": " + why);
}

std::error_code LastError() { return {errno, std::generic_category()}; }

// Itself, not what a link leads to.
fs::file_type TypeOf(const fs::path& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored).type();
}

// Why there is no folder `part` although mkdir, which failed with `error`, was asked for one.
std::string WhyNoFolder(const fs::path& part, const std::error_code& error) {
  std::error_code ignored;
  if (fs::exists(part, ignored)) {
    return part.string() + " is no folder";
  }
  return TypeOf(part) == fs::file_type::symlink ? part.string() + " is a link that leads nowhere" : error.message();
}

// Makes the folders of `path` that are missing, and adds them to `made`.
void MakeFolders(const fs::path& path, std::vector<fs::path>* made) {
  fs::path part;
  for (const fs::path& name : path) {
    part /= name;
    if (mkdir(part.c_str(), 0777) == 0) {
      made->push_back(part);
      continue;
    }
    const std::error_code error = LastError();
    std::error_code ignored;
    if (!fs::is_directory(part, ignored)) {
      Fail(path, WhyNoFolder(part, error));
    }
  }
}

// Removes a hidden folder with the files of our own in it; stays where there are others.
void RemoveHidden(const fs::path& hidden) {
  if (TypeOf(hidden) != fs::file_type::directory) {
    return;
  }
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(hidden, ignored)) {
    if (TypeOf(entry.path()) == fs::file_type::regular && IsOwnFile(entry.path().filename().string())) {
      unlink(entry.path().c_str());
    }
  }
  rmdir(hidden.c_str());
}

// Whether `name` is that of a hidden folder whose process has ended.
bool IsLeftover(const std::string& name) {
  const std::string beginning = kHiddenName;
  const std::string number = name.substr(std::min(name.size(), beginning.size()));
  constexpr std::size_t kMostDigits = 9;
  const bool is_hidden = name.rfind(beginning, 0) == 0 && !number.empty() && number.size() <= kMostDigits &&
                         number.find_first_not_of("0123456789") == std::string::npos && number.front() != '0';
  return is_hidden && kill(std::atoi(number.c_str()), 0) != 0 && errno == ESRCH;
}

// Keeps other programs from publishing into the same folder as long as it lives.
class PublishingLock {
 public:
  explicit PublishingLock(const fs::path& folder)
      : descriptor_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    constexpr int kTries = 200;
    constexpr std::chrono::milliseconds kPause{50};
    for (int i = 0; flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK; ++i) {
      if (i == kTries) {
        close(descriptor_);
        Fail(folder, "another program is writing there");
      }
      std::this_thread::sleep_for(kPause);
    }
  }
  ~PublishingLock() { close(descriptor_); }
  PublishingLock(const PublishingLock&) = delete;
  PublishingLock& operator=(const PublishingLock&) = delete;

 private:
  int descriptor_;
};

std::vector<std::string> OwnFiles(const fs::path& hidden) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(hidden)) {
    const std::string name = entry.path().filename().string();
    if (IsOwnFile(name)) {
      names.push_back(name);
    }
  }
  return names;
}

void RemoveOutdated(const fs::path& folder, const std::function<bool(const fs::path&)>& is_outdated) {
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (TypeOf(entry.path()) == fs::file_type::regular && is_outdated(entry.path())) {
      fs::remove(entry.path());
    }
  }
}

// A picture of somebody else's, or a link, that has the name of an event's picture.
bool IsTakenByOthers(const fs::path& file) {
  return IsEventPicture(file.filename().string()) && TypeOf(file) != fs::file_type::not_found &&
         !IsOwnEventPicture(file);
}

// Before anything is moved: a folder of a file's name could not be replaced.
void CheckNames(const std::vector<std::string>& names, const fs::path& folder) {
  for (const std::string& name : names) {
    if (TypeOf(folder / name) == fs::file_type::directory) {
      Fail(folder, name + " is a folder there");
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
  hidden_ = path_ / (kHiddenName + std::to_string(getpid()));
  try {
    Begin();
  } catch (const OutputError&) {
    Discard();
    throw;
  }
  RemoveHidden(hidden_);
  RemoveLeftovers();
}

fs::path OutputFolder::Begin() {
  MakeFolders(path_, &made_);
  RemoveHidden(hidden_);  // of a process that had this number before
  return Continue();
}

fs::path OutputFolder::Continue() {
  MakeFolders(path_, &made_);
  if (mkdir(hidden_.c_str(), 0777) != 0) {
    const std::error_code error = LastError();
    if (TypeOf(hidden_) != fs::file_type::directory) {
      Fail(path_, error.message());
    }
  }
  return hidden_;
}

OutputFolder::~OutputFolder() { Discard(); }

void OutputFolder::Discard() {
  RemoveHidden(hidden_);
  std::for_each(made_.rbegin(), made_.rend(), [](const fs::path& folder) { rmdir(folder.c_str()); });
  made_.clear();
}

std::vector<std::string> OutputFolder::Publish(const std::function<bool(const fs::path&)>& is_outdated) {
  std::vector<std::string> taken;
  try {
    const PublishingLock lock(path_);
    const std::vector<std::string> names = OwnFiles(hidden_);
    CheckNames(names, path_);
    RemoveOutdated(path_, is_outdated);
    for (const std::string& name : names) {
      if (IsTakenByOthers(path_ / name)) {
        taken.push_back(name);
      } else {
        fs::rename(hidden_ / name, path_ / name);
      }
    }
  } catch (const fs::filesystem_error& error) {
    Fail(path_, error.code().message());
  }
  RemoveHidden(hidden_);
  made_.clear();
  return taken;
}

void OutputFolder::RemoveLeftovers() const {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(path_, ignored)) {
    if (TypeOf(entry.path()) == fs::file_type::directory && IsLeftover(entry.path().filename().string())) {
      RemoveHidden(entry.path());
    }
  }
}

}  // namespace controller_base::demo
