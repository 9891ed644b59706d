#ifndef TEST_SUPPORT_TEMPORARY_FOLDER_H_
#define TEST_SUPPORT_TEMPORARY_FOLDER_H_

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace controller_base_test {

// An empty folder that ends with this object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "controller_base_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("cannot make a temporary folder");
    }
    path_ = name;
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // Writes a file into the folder and returns its path.
  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return (path_ / name).string();
  }

 private:
  std::filesystem::path path_;
};

inline std::string ReadFile(const std::filesystem::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_TEMPORARY_FOLDER_H_
