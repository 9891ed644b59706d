#ifndef TEST_ROS_MASTER_FAKE_MASTER_H_
#define TEST_ROS_MASTER_FAKE_MASTER_H_

#include <xmlrpcpp/XmlRpc.h>

#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace controller_base_test {

// Somebody at a port of the loopback address who answers questions to a ROS master, or does not.
class FakeMaster {
 public:
  using Answers = std::map<std::string, XmlRpc::XmlRpcValue>;  // what [1, "", ...] holds, for each method

  // Answers nothing else: such questions, and all that come after, wait until it is destroyed.
  explicit FakeMaster(const Answers& answers);
  ~FakeMaster();
  FakeMaster(const FakeMaster&) = delete;
  FakeMaster& operator=(const FakeMaster&) = delete;

  const std::string& Uri() const { return uri_; }
  int Questions() const { return questions_; }

 private:
  class Method;

  void WaitForTheEnd();

  Answers answers_;
  XmlRpc::XmlRpcServer server_;
  std::string uri_;
  std::vector<std::unique_ptr<Method>> methods_;
  std::atomic<int> questions_{0};
  std::mutex mutex_;
  std::condition_variable ended_;
  bool is_over_ = false;  // under mutex_
  std::thread thread_;
};

}  // namespace controller_base_test

#endif  // TEST_ROS_MASTER_FAKE_MASTER_H_
