#include "test/support/stalled_subscriber.h"

#include <arpa/inet.h>
#include <ros/header.h>
#include <ros/network.h>
#include <ros/this_node.h>
#include <ros/time.h>
#include <ros/topic_manager.h>
#include <ros/xmlrpc_manager.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xmlrpcpp/XmlRpc.h>

#include <cstring>
#include <stdexcept>
#include <utility>

#include "test/support/received.h"

namespace controller_base_test {
namespace {

constexpr int kQuickReceiveBufferBytes = 1 << 20;
constexpr int kReceiveBufferBytes = 4096;  // small, so that little is in transit
constexpr timeval kReadTimeout{static_cast<time_t>(kMessageTimeout), 0};

// Asks this process's own node where it serves `topic`, the way a subscriber does: host and port.
std::pair<std::string, int> RequestTopic(const std::string& topic) {
  std::string host;
  std::uint32_t port = 0;
  ros::network::splitURI(ros::XMLRPCManager::instance()->getServerURI(), host, port);
  XmlRpc::XmlRpcClient client(host.c_str(), static_cast<int>(port), "/");
  XmlRpc::XmlRpcValue request;
  request[0] = "/stalled_subscriber";
  request[1] = topic;
  request[2][0][0] = "TCPROS";
  XmlRpc::XmlRpcValue answer;  // [code, message, ["TCPROS", host, port]]
  if (!client.execute("requestTopic", request, answer) || client.isFault() || static_cast<int>(answer[0]) != 1) {
    throw std::runtime_error("the node does not serve " + topic);
  }
  return {answer[2][1], answer[2][2]};
}

}  // namespace

StalledSubscriber::StalledSubscriber(const std::string& topic) {
  const std::size_t subscribers_before = ros::TopicManager::instance()->getNumSubscribers(topic);
  const auto [host, port] = RequestTopic(topic);
  Connect(host, port);
  ShakeHands(topic);
  AwaitRegistration(topic, subscribers_before);
}

StalledSubscriber::~StalledSubscriber() { close(descriptor_); }

void StalledSubscriber::Connect(const std::string& host, int port) {
  descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &kReceiveBufferBytes, sizeof(kReceiveBufferBytes));
  setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &kReadTimeout, sizeof(kReadTimeout));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  inet_pton(AF_INET, host.c_str(), &address.sin_addr);
  if (connect(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
    throw std::runtime_error("cannot connect to the publisher");
  }
}

void StalledSubscriber::ShakeHands(const std::string& topic) {
  const ros::M_string fields{
      {"callerid", "/stalled_subscriber"}, {"topic", topic}, {"type", "*"}, {"md5sum", "*"}, {"tcp_nodelay", "0"}};
  boost::shared_array<std::uint8_t> buffer;
  std::uint32_t bytes = 0;
  ros::Header::write(fields, buffer, bytes);
  send(descriptor_, &bytes, sizeof(bytes), MSG_NOSIGNAL);
  send(descriptor_, buffer.get(), bytes, MSG_NOSIGNAL);

  std::optional<std::vector<std::uint8_t>> answer = ReadBlock();
  ros::Header header;
  std::string error;
  if (!answer || !header.parse(answer->data(), static_cast<std::uint32_t>(answer->size()), error)) {
    throw std::runtime_error("no connection header from the publisher");
  }
  connection_header_ = *header.getValues();
}

void StalledSubscriber::AwaitRegistration(const std::string& topic, std::size_t subscribers_before) const {
  const ros::WallTime deadline = ros::WallTime::now() + ros::WallDuration(kMessageTimeout);
  while (ros::TopicManager::instance()->getNumSubscribers(topic) == subscribers_before) {
    if (ros::WallTime::now() > deadline) {
      throw std::runtime_error("the publisher does not count its subscriber");
    }
    ros::WallDuration(0.001).sleep();
  }
}

std::vector<std::uint32_t> StalledSubscriber::DrainSequenceNumbers(std::uint32_t last) {
  setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &kQuickReceiveBufferBytes, sizeof(kQuickReceiveBufferBytes));
  std::vector<std::uint32_t> sequence;
  while (sequence.empty() || sequence.back() != last) {
    const std::optional<std::vector<std::uint8_t>> message = ReadBlock();
    if (!message) {
      break;
    }
    std::uint32_t seq = 0;  // header.seq leads every stamped message, little-endian
    std::memcpy(&seq, message->data(), sizeof(seq));
    sequence.push_back(seq);
  }
  return sequence;
}

std::optional<std::vector<std::uint8_t>> StalledSubscriber::ReadBlock() {
  std::uint32_t bytes = 0;
  if (!ReadExactly(reinterpret_cast<std::uint8_t*>(&bytes), sizeof(bytes))) {
    return std::nullopt;
  }
  std::vector<std::uint8_t> block(bytes);
  if (!ReadExactly(block.data(), block.size())) {
    return std::nullopt;
  }
  return block;
}

bool StalledSubscriber::ReadExactly(std::uint8_t* to, std::size_t bytes) {
  for (std::size_t read = 0; read < bytes;) {
    const ssize_t count = recv(descriptor_, to + read, bytes - read, 0);
    if (count <= 0) {
      return false;
    }
    read += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace controller_base_test
