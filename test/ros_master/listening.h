#ifndef TEST_ROS_MASTER_LISTENING_H_
#define TEST_ROS_MASTER_LISTENING_H_

#include <sys/types.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace controller_base_test {

constexpr char kLoopbackAddress[] = "0100007F";  // as /proc/net/tcp has it

struct ListeningSocket {
  std::string address;  // as /proc/net/tcp has it
  int port;
  std::string inode;
};

inline std::vector<ListeningSocket> ListeningSockets() {
  std::vector<ListeningSocket> sockets;
  for (const char* table : {"/proc/net/tcp", "/proc/net/tcp6"}) {
    std::ifstream in(table);
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
      std::istringstream stream(line);
      const std::vector<std::string> fields{std::istream_iterator<std::string>(stream), {}};
      const std::string& local = fields.at(1);
      const std::size_t colon = local.find(':');
      if (fields.at(3) == "0A") {
        sockets.push_back({local.substr(0, colon), std::stoi(local.substr(colon + 1), nullptr, 16), fields.at(9)});
      }
    }
  }
  return sockets;
}

// Local addresses that a port is listened on.
inline std::vector<std::string> ListeningAddresses(int port) {
  std::vector<std::string> addresses;
  for (const ListeningSocket& socket : ListeningSockets()) {
    if (socket.port == port) {
      addresses.push_back(socket.address);
    }
  }
  return addresses;
}

// Local addresses that a process listens on, one for each of its ports.
inline std::vector<std::string> ListeningAddressesOf(pid_t process) {
  std::set<std::string> open_files;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
    std::error_code gone;
    open_files.insert(std::filesystem::read_symlink(entry, gone).string());
  }
  std::vector<std::string> addresses;
  for (const ListeningSocket& socket : ListeningSockets()) {
    if (open_files.count("socket:[" + socket.inode + "]") > 0) {
      addresses.push_back(socket.address);
    }
  }
  return addresses;
}

}  // namespace controller_base_test

#endif  // TEST_ROS_MASTER_LISTENING_H_
