#ifndef CONTROLLER_BASE_DEMO_OUTPUT_OWN_FILE_H_
#define CONTROLLER_BASE_DEMO_OUTPUT_OWN_FILE_H_

#include <cstddef>
#include <filesystem>
#include <string>

namespace controller_base::demo {

// "event-03-detour.png": of the picture of moment `index`, counted from 0, whose last event is of the kind "detour".
std::string EventPictureName(std::size_t index, const std::string& kind);

// Whether EventPictureName gives this name for one of the kinds that a drive tells.
bool IsEventPicture(const std::string& name);

// Whether the file is the picture of an event that the demo drew (picture_mark.h), and not one of somebody else with
// such a name.
bool IsOwnEventPicture(const std::filesystem::path& file);

// Whether a file of this name (without a folder) may be one that the programs write into an OutputFolder.
bool IsOwnFile(const std::string& name);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_OUTPUT_OWN_FILE_H_
