#ifndef CONTROLLER_BASE_DEMO_OUTPUT_DRIVE_FILES_H_
#define CONTROLLER_BASE_DEMO_OUTPUT_DRIVE_FILES_H_

#include <ostream>
#include <string>

#include "simulation/drive_record.h"
#include "simulation/drive_setup.h"

namespace controller_base::demo {

// In quotes, a quote within doubled.
std::string CsvText(const std::string& text);

// One line for an event, as it is printed while the robot drives.
std::string EventLine(const follower::Event& event);

// The same drive gives the same bytes.

// A header line, then one line a cycle: time_s,x_m,y_m,yaw_rad,speed_mps,turn_rate_radps,index,deviation_m,state
void WriteTrajectory(const simulation::DriveRecord& drive, std::ostream& out);
// A header line, then one line an event: time_s,kind,x_m,y_m,text (in quotes, a quote within doubled)
void WriteEvents(const simulation::DriveRecord& drive, std::ostream& out);
// One JSON object: what was asked for, what came of it, the program's exit status, and the drive's figures.
void WriteResult(const simulation::DriveSetup& setup, const simulation::DriveRecord& drive, int exit_status,
                 std::ostream& out);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_OUTPUT_DRIVE_FILES_H_
