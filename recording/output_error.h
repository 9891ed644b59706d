#ifndef CONTROLLER_BASE_RECORDING_OUTPUT_ERROR_H_
#define CONTROLLER_BASE_RECORDING_OUTPUT_ERROR_H_

#include <stdexcept>

namespace controller_base::recording {

// A file or folder that cannot be made or written; what() is one line with its name.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace controller_base::recording

#endif  // CONTROLLER_BASE_RECORDING_OUTPUT_ERROR_H_
