#ifndef CONTROLLER_BASE_RECORDING_ACTIVE_FILE_H_
#define CONTROLLER_BASE_RECORDING_ACTIVE_FILE_H_

#include <string>

namespace controller_base::recording {

// The file FILE.active, which is called FILE once it is complete. Only one program at a time can have it. One that a
// program left that was killed is replaced; what is there under that name and is neither empty nor a bag stays. Where
// FILE is a link to a file, that one is meant.
class ActiveFile {
 public:
  // `file` is the complete one's name. Throws OutputError when it cannot be replaced, or FILE.active cannot be written.
  explicit ActiveFile(const std::string& file);
  // Leaves FILE.active where it is.
  ~ActiveFile();
  ActiveFile(const ActiveFile&) = delete;
  ActiveFile& operator=(const ActiveFile&) = delete;

  // FILE.active, for whoever writes it.
  const std::string& name() const { return name_; }

  // Replaces FILE by it. Throws OutputError.
  void Complete() const;
  // Throws OutputError.
  void Remove() const;

 private:
  void Open();

  std::string asked_for_;  // as the user calls the file
  std::string file_;
  std::string name_;
  int descriptor_ = -1;  // holds the lock
};

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_ACTIVE_FILE_H_
