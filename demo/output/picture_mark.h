#ifndef CONTROLLER_BASE_DEMO_OUTPUT_PICTURE_MARK_H_
#define CONTROLLER_BASE_DEMO_OUTPUT_PICTURE_MARK_H_

#include <filesystem>
#include <vector>

namespace controller_base::demo {

// Names the demo in a PNG file, as its "Software": a text that no viewer shows, and that tells our pictures from
// pictures of other people with the same name. `png` is a whole file.
void MarkAsOwn(std::vector<unsigned char>* png);

// Whether the file is a PNG that MarkAsOwn was given; false where it cannot be read.
bool IsMarkedAsOwn(const std::filesystem::path& file);

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_OUTPUT_PICTURE_MARK_H_
