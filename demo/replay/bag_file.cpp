#include "demo/replay/bag_file.h"

#include <rosbag/chunked_file.h>
#include <rosbag/constants.h>
#include <rosbag/exceptions.h>

#include <algorithm>
#include <filesystem>

namespace controller_base::demo {
namespace {

constexpr std::uint64_t kHighestLz4Ratio = 255;  // of the format, to one

[[noreturn]] void FailDamaged(const std::string& how) { throw BagFileError("cut off or damaged: " + how); }

void CheckLeft(std::uint64_t wanted, std::uint64_t left) {
  if (wanted > left) {
    FailDamaged("a record claims " + std::to_string(wanted) + " bytes where " + std::to_string(left) + " are left");
  }
}

// The first bytes of a text, which are removed from it.
std::string_view Take(std::string_view* bytes, std::uint32_t length) {
  CheckLeft(length, bytes->size());
  const std::string_view taken = bytes->substr(0, length);
  bytes->remove_prefix(length);
  return taken;
}

// Bags are little-endian.
template <typename Number>
Number ToNumber(std::string_view bytes) {
  Number number = 0;
  for (std::size_t i = sizeof(Number); i > 0; --i) {
    number = static_cast<Number>(number << 8U | static_cast<unsigned char>(bytes[i - 1]));
  }
  return number;
}

// A length, and as many bytes.
std::string_view TakeBlock(std::string_view* bytes) {
  return Take(bytes, ToNumber<std::uint32_t>(Take(bytes, sizeof(std::uint32_t))));
}

// Each field is a block "name=value".
std::map<std::string, std::string> ToFields(std::string_view header) {
  std::map<std::string, std::string> fields;
  while (!header.empty()) {
    const std::string_view field = TakeBlock(&header);
    const std::size_t delimiter = field.find(static_cast<char>(rosbag::FIELD_DELIM));
    if (delimiter == std::string_view::npos) {
      FailDamaged("a header's field has no value");
    }
    fields[std::string(field.substr(0, delimiter))] = field.substr(delimiter + 1);
  }
  return fields;
}

const std::string& Text(const std::map<std::string, std::string>& fields, const std::string& name) {
  const auto field = fields.find(name);
  if (field == fields.end()) {
    FailDamaged("a record has no '" + name + "'");
  }
  return field->second;
}

template <typename Number>
Number NumberIn(const std::map<std::string, std::string>& fields, const std::string& name) {
  const std::string& bytes = Text(fields, name);
  if (bytes.size() != sizeof(Number)) {
    FailDamaged("a record's '" + name + "' has " + std::to_string(bytes.size()) + " bytes instead of " +
                std::to_string(sizeof(Number)));
  }
  return ToNumber<Number>(bytes);
}

std::uint8_t Operation(const std::map<std::string, std::string>& fields) {
  return NumberIn<std::uint8_t>(fields, rosbag::OP_FIELD_NAME);
}

ros::Time ToTime(std::uint64_t stamp) {
  constexpr std::uint32_t kNanosecondsPerSecond = 1'000'000'000;
  const auto nanoseconds = static_cast<std::uint32_t>(stamp >> 32U);
  if (nanoseconds >= kNanosecondsPerSecond) {
    FailDamaged("a message was recorded at an impossible time");
  }
  return {static_cast<std::uint32_t>(stamp), nanoseconds};
}

rosbag::CompressionType ToCompression(const std::string& name) {
  if (name == rosbag::COMPRESSION_NONE) {
    return rosbag::compression::Uncompressed;
  }
  if (name == rosbag::COMPRESSION_LZ4) {
    return rosbag::compression::LZ4;
  }
  if (name == rosbag::COMPRESSION_BZ2) {
    return rosbag::compression::BZ2;
  }
  FailDamaged("a chunk's compression is unknown");
}

// What a chunk of so many bytes can become at most.
std::uint64_t LargestSize(std::uint64_t length, rosbag::CompressionType compression) {
  switch (compression) {
    case rosbag::compression::Uncompressed:
      return length;
    case rosbag::compression::LZ4:
      return std::min<std::uint64_t>(kHighestLz4Ratio * length, BagFile::kLargestChunk);
    case rosbag::compression::BZ2:
      break;
  }
  return BagFile::kLargestChunk;
}

}  // namespace

BagFile::BagFile(const std::string& file) : in_(file, std::ios::binary), left_(std::filesystem::file_size(file)) {
  Read(sizeof(kVersionLine) - 1);
  ReadFileHeader();
}

void BagFile::ReadFileHeader() {
  const Fields fields = ReadHeader();
  if (Operation(fields) != rosbag::OP_FILE_HEADER) {
    FailDamaged("it does not begin with a bag's header");
  }
  if (NumberIn<std::uint64_t>(fields, rosbag::INDEX_POS_FIELD_NAME) == 0) {
    throw BagFileError("the recording was cut off: it has no index");
  }
  const auto encryptor = fields.find(rosbag::ENCRYPTOR_FIELD_NAME);
  if (encryptor != fields.end() && !encryptor->second.empty()) {
    throw BagFileError("it is encrypted");
  }
  Skip(ReadLength());
  ReadRecords();
  if (connections_.size() != NumberIn<std::uint32_t>(fields, rosbag::CONNECTION_COUNT_FIELD_NAME) ||
      chunks_.size() != NumberIn<std::uint32_t>(fields, rosbag::CHUNK_COUNT_FIELD_NAME)) {
    FailDamaged("some of its chunks or connections are missing");
  }
}

void BagFile::ReadRecords() {
  while (left_ > 0) {
    const Fields fields = ReadHeader();
    switch (Operation(fields)) {
      case rosbag::OP_CHUNK:
        AddChunk(fields);
        break;
      case rosbag::OP_CONNECTION:
        AddConnection(fields);
        break;
      case rosbag::OP_INDEX_DATA:
      case rosbag::OP_CHUNK_INFO:
        Skip(ReadLength());  // for readers that jump to a time or a topic
        break;
      default:
        FailDamaged("a record is of an unknown kind");
    }
  }
}

void BagFile::AddChunk(const Fields& fields) {
  Chunk chunk;
  chunk.compression = ToCompression(Text(fields, rosbag::COMPRESSION_FIELD_NAME));
  chunk.size = NumberIn<std::uint32_t>(fields, rosbag::SIZE_FIELD_NAME);
  chunk.length = ReadLength();
  chunk.begin = in_.tellg();
  if (chunk.length > kLargestChunk || chunk.size > LargestSize(chunk.length, chunk.compression)) {
    FailDamaged("a chunk of " + std::to_string(chunk.length) + " bytes claims to hold " + std::to_string(chunk.size));
  }
  Skip(chunk.length);
  chunks_.push_back(chunk);
}

void BagFile::AddConnection(const Fields& fields) {
  const Fields header = ToFields(Read(ReadLength()));
  connections_[NumberIn<std::uint32_t>(fields, rosbag::CONNECTION_FIELD_NAME)] = {
      Text(fields, rosbag::TOPIC_FIELD_NAME), Text(header, "type"), Text(header, "md5sum")};
}

std::optional<BagMessage> BagFile::Next() {
  while (!rest_.empty() || next_chunk_ < chunks_.size()) {
    if (rest_.empty()) {
      LoadChunk(chunks_[next_chunk_++]);
      continue;
    }
    const Fields fields = ToFields(TakeBlock(&rest_));
    const std::string_view data = TakeBlock(&rest_);
    if (Operation(fields) == rosbag::OP_MSG_DATA) {
      return BagMessage{&ConnectionOf(fields), ToTime(NumberIn<std::uint64_t>(fields, rosbag::TIME_FIELD_NAME)), data};
    }
  }
  return std::nullopt;
}

const BagConnection& BagFile::ConnectionOf(const Fields& fields) const {
  const auto connection = connections_.find(NumberIn<std::uint32_t>(fields, rosbag::CONNECTION_FIELD_NAME));
  if (connection == connections_.end()) {
    FailDamaged("a message has no connection");
  }
  return connection->second;
}

void BagFile::LoadChunk(const Chunk& chunk) {
  in_.seekg(chunk.begin);
  left_ = chunk.length;
  std::string bytes = Read(chunk.length);
  chunk_.assign(chunk.size, 0);
  try {
    rosbag::ChunkedFile().decompress(chunk.compression, chunk_.data(), chunk.size,
                                     reinterpret_cast<std::uint8_t*>(bytes.data()), chunk.length);
  } catch (const rosbag::BagException& error) {
    FailDamaged(error.what());
  }
  rest_ = {reinterpret_cast<const char*>(chunk_.data()), chunk_.size()};
}

BagFile::Fields BagFile::ReadHeader() { return ToFields(Read(ReadLength())); }

std::uint32_t BagFile::ReadLength() { return ToNumber<std::uint32_t>(Read(sizeof(std::uint32_t))); }

std::string BagFile::Read(std::uint32_t length) {
  CheckLeft(length, std::min<std::uint64_t>(left_, kLargestChunk));
  std::string bytes(length, '\0');
  if (!in_.read(bytes.data(), length)) {
    throw BagFileError("cannot be read");
  }
  left_ -= length;
  return bytes;
}

void BagFile::Skip(std::uint32_t length) {
  CheckLeft(length, left_);
  in_.seekg(length, std::ios::cur);
  left_ -= length;
}

}  // namespace controller_base::demo
