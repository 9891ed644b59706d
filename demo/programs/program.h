#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_PROGRAM_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_PROGRAM_H_

#include <string>
#include <vector>

namespace controller_base::demo {

// What a program says on standard error when it fails, and its exit status.
struct Complaint {
  int status;
  std::string text;
};

// Says so, in one printable line after the program's name, and returns the status.
int Complain(const std::string& name, const Complaint& complaint);

using Arguments = std::vector<std::string>;  // without the program's name

// The main function of every program: prepares the process, lets signals ask it to end (process.h), and runs `body`,
// which returns the exit status. An exception from it ends the program with the complaint that `describe` makes of it,
// which is called while the exception is handled. An interrupted process ends here, whatever its threads are at.
int RunProgram(const std::string& name, int argc, char** argv, int (*body)(const Arguments&), Complaint (*describe)());

// The exception that is being handled, as the programs that drive describe it: with an ExitStatus.
Complaint DescribeDriveFailure();

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_PROGRAM_H_
