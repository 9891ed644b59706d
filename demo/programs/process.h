#ifndef CONTROLLER_BASE_DEMO_PROGRAMS_PROCESS_H_
#define CONTROLLER_BASE_DEMO_PROGRAMS_PROCESS_H_

#include <atomic>

namespace controller_base::demo {

// What every program does first, before it opens any file:
//
//   Standard descriptors that are closed are opened on /dev/null, or the next file that is opened would become standard
//   output, and be printed into.
//
//   SIGPIPE and SIGXFSZ are ignored: a write fails instead. A reader of the output who goes away (`| head`) does not
//   cost the files, and a limit on their size is an error like a full disk.
//
//   The limit of open files is raised as far as the system allows.
//
//   Standard output is written line by line, in order with complaints, also through a pipe.
void PrepareProcess();

// Throws std::runtime_error, with one line, where so few files may be open at a time that ROS would end the process.
void RequireOpenFiles();

// From now on SIGINT, SIGTERM and SIGHUP make StopRequested() true. Once that is so, a further SIGINT ends the process
// at once with status 130, whatever it does. Signals within a tenth of a second of the first are the same request,
// because timeout(1) sends each twice. A SIGHUP that was ignored when the program was started (nohup) stays ignored.
void CatchStopSignals();

// Throws simulation::Interrupted when a signal has asked to end.
void EndIfAsked();

// Whether a signal has asked to end. Stays true.
const std::atomic<bool>& StopRequested();

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_PROGRAMS_PROCESS_H_
