#include "demo/output/picture_mark.h"

#include <algorithm>
#include <boost/crc.hpp>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

namespace controller_base::demo {
namespace {

// A PNG is a signature of 8 bytes and then chunks, of which the first, the header, has 25 bytes and must be the first.
constexpr std::size_t kHeaderEnd = 8 + 25;

void Append(std::uint32_t number, std::string* bytes) {
  for (const unsigned int shift : {24U, 16U, 8U, 0U}) {
    *bytes += static_cast<char>(number >> shift & 0xffU);
  }
}

// A chunk is the length of its content, its type, the content, and a checksum over the last two.
std::string Mark() {
  const std::string content = std::string("Software") + '\0' + "controller_base_demo";
  const std::string type_and_content = "tEXt" + content;
  boost::crc_32_type checksum;
  checksum.process_bytes(type_and_content.data(), type_and_content.size());
  std::string chunk;
  Append(static_cast<std::uint32_t>(content.size()), &chunk);
  chunk += type_and_content;
  Append(checksum.checksum(), &chunk);
  return chunk;
}

}  // namespace

void MarkAsOwn(std::vector<unsigned char>* png) {
  const std::string mark = Mark();
  png->insert(png->begin() + kHeaderEnd, mark.begin(), mark.end());
}

bool IsMarkedAsOwn(const std::filesystem::path& file) {
  const std::string mark = Mark();
  std::string beginning(kHeaderEnd + mark.size(), '\0');
  std::ifstream in(file, std::ios::binary);
  in.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
  return in && beginning.compare(0, 4, "\x89PNG") == 0 && beginning.compare(kHeaderEnd, mark.size(), mark) == 0;
}

}  // namespace controller_base::demo
