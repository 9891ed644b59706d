#include "test/ros_master/fake_master.h"

#include <stdexcept>

namespace controller_base_test {

using XmlRpc::XmlRpcValue;

class FakeMaster::Method : public XmlRpc::XmlRpcServerMethod {
 public:
  Method(const std::string& name, FakeMaster* master)
      : XmlRpcServerMethod(name, &master->server_), name_(name), master_(master) {}

  void execute(XmlRpcValue& /*question*/, XmlRpcValue& answer) override {
    ++master_->questions_;
    const auto known = master_->answers_.find(name_);
    if (known == master_->answers_.end()) {
      master_->WaitForTheEnd();
    } else {
      answer[0] = 1;
      answer[1] = "";
      answer[2] = known->second;
    }
  }

 private:
  std::string name_;
  FakeMaster* master_;
};

FakeMaster::FakeMaster(const Answers& answers) : answers_(answers) {
  for (const char* name : {"deleteParam", "getParam", "getPid", "getPublishedTopics", "hasParam", "registerPublisher",
                           "registerService", "registerSubscriber", "setParam", "subscribeParam", "unregisterPublisher",
                           "unregisterService", "unregisterSubscriber", "unsubscribeParam"}) {
    methods_.push_back(std::make_unique<Method>(name, this));
  }
  if (!server_.bindAndListen(0)) {
    throw std::runtime_error("no free port");
  }
  uri_ = "http://127.0.0.1:" + std::to_string(server_.get_port());
  thread_ = std::thread([this] {
    constexpr double kLookAround = 0.05;  // s
    std::unique_lock<std::mutex> lock(mutex_);
    while (!is_over_) {
      lock.unlock();
      server_.work(kLookAround);
      lock.lock();
    }
  });
}

FakeMaster::~FakeMaster() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    is_over_ = true;
  }
  ended_.notify_all();
  thread_.join();
  server_.shutdown();
}

void FakeMaster::WaitForTheEnd() {
  std::unique_lock<std::mutex> lock(mutex_);
  ended_.wait(lock, [this] { return is_over_; });
}

}  // namespace controller_base_test
