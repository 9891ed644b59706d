#ifndef CONTROLLER_BASE_DEMO_REPLAY_BAG_FILE_H_
#define CONTROLLER_BASE_DEMO_REPLAY_BAG_FILE_H_

#include <ros/time.h>
#include <rosbag/stream.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace controller_base::demo {

// A bag file that cannot be read; what() says why, without the file's name.
class BagFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What a bag says once about all messages of a topic from one sender.
struct BagConnection {
  std::string topic;
  std::string type;    // such as "std_msgs/Time"
  std::string md5sum;  // of the type's definition
};

// A message as the file holds it.
struct BagMessage {
  const BagConnection* connection;
  ros::Time stamp;        // when it was recorded
  std::string_view data;  // serialized
};

// Reads a bag file of version 2.0 in the order in which it was written. Every length and count in the file is compared
// with what is there before it is used: rosbag's own reader leaves its buffers where an index or a header is damaged.
// Holds one chunk in memory.
class BagFile {
 public:
  static constexpr char kVersionLine[] = "#ROSBAG V2.0\n";
  static constexpr std::uint32_t kLargestChunk = 256U << 20U;  // bytes, uncompressed or compressed

  // Reads the headers of all records. The file begins with kVersionLine. Throws BagFileError, and so does Next.
  explicit BagFile(const std::string& file);

  // The next message; nothing after the last one. Its data are valid until the next call, its connection as long as
  // this object.
  std::optional<BagMessage> Next();

 private:
  using Fields = std::map<std::string, std::string>;  // of a record's header

  struct Chunk {
    rosbag::CompressionType compression;
    std::uint32_t length;  // bytes in the file
    std::uint32_t size;    // bytes, uncompressed
    std::streamoff begin;  // in the file
  };

  void ReadFileHeader();
  void ReadRecords();
  void AddChunk(const Fields& fields);
  void AddConnection(const Fields& fields);
  void LoadChunk(const Chunk& chunk);
  const BagConnection& ConnectionOf(const Fields& fields) const;
  Fields ReadHeader();
  std::uint32_t ReadLength();
  std::string Read(std::uint32_t length);
  void Skip(std::uint32_t length);

  std::ifstream in_;
  std::uint64_t left_;                                  // bytes that may be read from here
  std::map<std::uint32_t, BagConnection> connections_;  // by number
  std::vector<Chunk> chunks_;
  std::size_t next_chunk_ = 0;
  std::vector<std::uint8_t> chunk_;  // the one that is being read, uncompressed
  std::string_view rest_;            // of chunk_
};

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_REPLAY_BAG_FILE_H_
