#include "ros_master/loopback_calls.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <ros/console.h>
#include <ros/xmlrpc_manager.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace controller_base::ros_master {
namespace {

constexpr int kBacklog = 128;  // connections that wait

// The address of an IPv4 socket that listens; nothing for every other descriptor.
std::optional<sockaddr_in> ListeningAddress(int descriptor) {
  int listens = 0;
  socklen_t length = sizeof(listens);
  sockaddr_storage address{};
  socklen_t address_length = sizeof(address);
  if (getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &length) != 0 || listens == 0 ||
      getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &address_length) != 0 ||
      address.ss_family != AF_INET) {
    return std::nullopt;
  }
  return reinterpret_cast<const sockaddr_in&>(address);
}

// The descriptor of this process that listens on `port`.
std::optional<int> Listener(std::uint16_t port) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const int descriptor = std::atoi(entry.path().filename().c_str());
    const std::optional<sockaddr_in> address = ListeningAddress(descriptor);
    if (address && ntohs(address->sin_port) == port) {
      return descriptor;
    }
  }
  return std::nullopt;
}

// Two sockets may share a port when both say so.
bool Share(int descriptor) {
  const int yes = 1;
  return setsockopt(descriptor, SOL_SOCKET, SO_REUSEPORT, &yes, sizeof(yes)) == 0;
}

bool ListenOnLoopback(int descriptor, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
         listen(descriptor, kBacklog) == 0;
}

// A second socket on the same port takes the place of the first, under its number. roscpp's thread asks the
// number anew ten times a second, and until then both listen.
bool MoveToLoopback(int everywhere, std::uint16_t port) {
  const int loopback = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (loopback < 0) {
    return false;
  }
  const bool is_done = Share(everywhere) && Share(loopback) && ListenOnLoopback(loopback, port) &&
                       dup3(loopback, everywhere, O_CLOEXEC) == everywhere;
  close(loopback);
  return is_done;
}

}  // namespace

// Nobody has been told of the port yet.
void TakeCallsOnLoopbackAlone() {
  const auto port = static_cast<std::uint16_t>(ros::XMLRPCManager::instance()->getServerPort());
  const std::optional<int> everywhere = Listener(port);
  if (!everywhere || !MoveToLoopback(*everywhere, port)) {
    ROS_WARN("other machines can reach this program's port %d, and end its ROS node", port);
  }
}

}  // namespace controller_base::ros_master
