#include "simulation/image_size.h"

#include <cstdlib>
#include <limits>
#include <string>

namespace controller_base::simulation {
namespace {

// What follows in the file; empty where it ends before.
std::string Next(std::istream& image, std::size_t bytes) {
  std::string text(bytes, '\0');
  image.read(text.data(), static_cast<std::streamsize>(bytes));
  return image ? text : "";
}

std::int64_t BigEndian(const std::string& bytes) {
  std::int64_t value = 0;
  for (const char byte : bytes) {
    value = value * 256 + static_cast<unsigned char>(byte);
  }
  return value;
}

std::int64_t LittleEndian(const std::string& bytes) { return BigEndian({bytes.rbegin(), bytes.rend()}); }

// The signature's last six bytes, the length and the name of the first chunk, and then the sizes in it.
std::optional<ImageSize> PngSize(std::istream& image) {
  const std::string head = Next(image, 6 + 8);
  const std::string sizes = Next(image, 8);
  if (head.substr(0, 6) != "NG\r\n\x1a\n" || sizes.empty()) {
    return std::nullopt;
  }
  return ImageSize{BigEndian(sizes.substr(0, 4)), BigEndian(sizes.substr(4))};
}

// Two numbers after white space and comments, which go from a # to the end of their line.
std::optional<ImageSize> PnmSize(std::istream& image) {
  ImageSize size{};
  for (std::int64_t* number : {&size.width, &size.height}) {
    while ((image >> std::ws).peek() == '#') {
      image.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    if (!(image >> *number) || *number < 0) {
      return std::nullopt;
    }
  }
  return size;
}

// Sizes have two bytes after the oldest head, which is 12 bytes long, and four after all others; a negative height
// means that the top row is first.
std::optional<ImageSize> BmpSize(std::istream& image) {
  constexpr std::int64_t kOldHead = 12;
  Next(image, 12);
  const std::int64_t head_length = LittleEndian(Next(image, 4));
  const std::size_t bytes = head_length == kOldHead ? 2 : 4;
  const std::string width = Next(image, bytes);
  const std::string height = Next(image, bytes);
  if (height.empty()) {
    return std::nullopt;
  }
  const std::int64_t rows = LittleEndian(height);
  const std::int64_t turned_over =
      bytes == 4 && rows >= (std::int64_t{1} << 31U) ? (std::int64_t{1} << 32U) - rows : rows;
  return ImageSize{LittleEndian(width), turned_over};
}

// Start-of-frame segments hold the size; DHT, JPG and DAC are numbered among them.
bool IsFrame(unsigned char marker) {
  return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

// Segments of a marker and a length, up to the first that starts a frame.
std::optional<ImageSize> JpegSize(std::istream& image) {
  while (image.get() == 0xff) {
    int marker = image.get();
    while (marker == 0xff) {  // fill bytes
      marker = image.get();
    }
    const std::int64_t length = BigEndian(Next(image, 2));
    if (!image || length < 2) {
      return std::nullopt;
    }
    if (IsFrame(static_cast<unsigned char>(marker))) {
      const std::string sizes = Next(image, 5);  // one byte of precision before them
      return sizes.empty() ? std::nullopt
                           : std::optional<ImageSize>({BigEndian(sizes.substr(3)), BigEndian(sizes.substr(1, 2))});
    }
    image.ignore(length - 2);
  }
  return std::nullopt;
}

}  // namespace

std::optional<ImageSize> ReadImageSize(std::istream& image) {
  const std::string magic = Next(image, 2);
  if (magic == "\x89P") {
    return PngSize(image);
  }
  if (magic == "BM") {
    return BmpSize(image);
  }
  if (magic == "\xff\xd8") {
    return JpegSize(image);
  }
  const bool is_pnm = magic.size() == 2 && magic[0] == 'P' && magic[1] >= '1' && magic[1] <= '6';
  return is_pnm ? PnmSize(image) : std::nullopt;
}

}  // namespace controller_base::simulation
