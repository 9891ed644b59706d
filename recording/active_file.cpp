#include "recording/active_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "recording/output_error.h"

namespace controller_base::recording {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& file, const std::string& why) {
  throw OutputError("cannot write the bag " + file + ": " + why);
}

// What a bag of this name is to replace: itself, or the file that a link of this name leads to.
std::string ReplacedFile(const std::string& file) {
  if (file.empty()) {
    Fail("''", "a file's name is wanted");
  }
  std::error_code error;
  const bool is_link = fs::is_symlink(file, error);
  const fs::path target = is_link ? fs::canonical(file, error) : fs::path(file);
  if (error && is_link) {
    Fail(file, "it is a link that leads nowhere");
  }
  if (fs::is_directory(target, error)) {
    Fail(file, "a file's name is wanted");
  }
  if (fs::exists(target, error) && !fs::is_regular_file(target, error)) {
    Fail(file, "it is no file that could be replaced");
  }
  return target.string();
}

// Whether the open file is empty, or begins as a bag does.
bool MayBeBag(int descriptor) {
  constexpr char kBeginning[] = "#ROSBAG V";
  std::array<char, sizeof(kBeginning) - 1> bytes{};
  const ssize_t size = pread(descriptor, bytes.data(), bytes.size(), 0);
  return size == 0 ||
         (size == static_cast<ssize_t>(bytes.size()) && std::memcmp(bytes.data(), kBeginning, bytes.size()) == 0);
}

// Whether the open file is still the one of this name.
bool IsCalled(int descriptor, const std::string& name) {
  struct stat opened {};
  struct stat named {};
  return fstat(descriptor, &opened) == 0 && lstat(name.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
         opened.st_ino == named.st_ino;
}

}  // namespace

ActiveFile::ActiveFile(const std::string& file)
    : asked_for_(file), file_(ReplacedFile(file)), name_(file_ + ".active") {
  try {
    Open();
  } catch (const OutputError&) {
    close(descriptor_);
    throw;
  }
}

ActiveFile::~ActiveFile() { close(descriptor_); }

void ActiveFile::Open() {
  std::error_code ignored;
  const fs::file_type type = fs::symlink_status(name_, ignored).type();
  if (type != fs::file_type::not_found && type != fs::file_type::regular && type != fs::file_type::none) {
    Fail(asked_for_, name_ + " is there, and is no file");
  }
  descriptor_ = open(name_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
  if (descriptor_ < 0) {
    Fail(asked_for_, std::strerror(errno));
  }
  const bool is_taken = flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  if (is_taken || !IsCalled(descriptor_, name_)) {
    Fail(asked_for_, "another program is writing it");
  }
  if (!MayBeBag(descriptor_)) {
    Fail(asked_for_, name_ + " is there, and is no bag that was cut off");
  }
}

void ActiveFile::Complete() const {
  std::error_code error;
  fs::rename(name_, file_, error);
  if (error) {
    Fail(asked_for_, error.message());
  }
}

void ActiveFile::Remove() const {
  std::error_code error;
  fs::remove(name_, error);
  if (error) {
    Fail(asked_for_, error.message());
  }
}

}  // namespace controller_base::recording
