#include "ros_master/loopback_calls.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <ros/node_handle.h>
#include <ros/xmlrpc_manager.h>
#include <unistd.h>
#include <xmlrpcpp/XmlRpc.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "test/ros_master/listening.h"

namespace controller_base::ros_master {
namespace {

using controller_base_test::kLoopbackAddress;
using controller_base_test::ListeningAddresses;
using testing::ElementsAre;

// This machine's IPv4 addresses that others may reach.
std::vector<std::string> OutsideAddresses() {
  std::vector<std::string> addresses;
  ifaddrs* all = nullptr;
  EXPECT_EQ(getifaddrs(&all), 0);
  for (const ifaddrs* one = all; one != nullptr; one = one->ifa_next) {
    if (one->ifa_addr == nullptr || one->ifa_addr->sa_family != AF_INET || (one->ifa_flags & IFF_LOOPBACK) != 0) {
      continue;
    }
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(one->ifa_addr)->sin_addr, text, sizeof(text));
    addresses.emplace_back(text);
  }
  freeifaddrs(all);
  return addresses;
}

// Whether ROS in this process answers a call at that address.
bool Answers(const std::string& address) {
  XmlRpc::XmlRpcClient client(address.c_str(), static_cast<int>(ros::XMLRPCManager::instance()->getServerPort()), "/");
  XmlRpc::XmlRpcValue request;
  request[0] = "/test";
  XmlRpc::XmlRpcValue answer;
  return client.execute("getPid", request, answer) && answer.size() == 3 && static_cast<int&>(answer[2]) == getpid();
}

TEST(LoopbackCalls, ReachThisProcessFromThisMachineAlone) {
  const ros::NodeHandle node;
  const int port = static_cast<int>(ros::XMLRPCManager::instance()->getServerPort());
  ASSERT_THAT(ListeningAddresses(port), ElementsAre("00000000"));
  for (const std::string& address : OutsideAddresses()) {
    EXPECT_TRUE(Answers(address)) << address;
  }

  TakeCallsOnLoopbackAlone();

  for (int tries = 0; tries < 1000 && ListeningAddresses(port).size() > 1; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));  // until roscpp's thread has looked at its sockets again
  }
  EXPECT_THAT(ListeningAddresses(port), ElementsAre(kLoopbackAddress));
  EXPECT_TRUE(Answers("127.0.0.1"));
  EXPECT_TRUE(Answers("127.0.0.1")) << "again";
  for (const std::string& address : OutsideAddresses()) {
    EXPECT_FALSE(Answers(address)) << address;
  }
}

}  // namespace
}  // namespace controller_base::ros_master
