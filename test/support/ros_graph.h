#ifndef TEST_SUPPORT_ROS_GRAPH_H_
#define TEST_SUPPORT_ROS_GRAPH_H_

#include <ros/master.h>
#include <ros/this_node.h>

#include <algorithm>
#include <string>
#include <vector>

namespace controller_base_test {

// The topics that this node publishes according to the master, sorted, without the log topic that every node has.
inline std::vector<std::string> AdvertisedTopics() {
  XmlRpc::XmlRpcValue request;
  request[0] = ros::this_node::getName();
  XmlRpc::XmlRpcValue response;
  XmlRpc::XmlRpcValue state;  // [publishers, subscribers, services], the first [[topic, [node, ...]], ...]
  if (!ros::master::execute("getSystemState", request, response, state, false)) {
    return {"no answer from the master"};
  }
  std::vector<std::string> topics;
  XmlRpc::XmlRpcValue& publishers = state[0];
  for (int i = 0; i < publishers.size(); ++i) {
    const std::string topic = publishers[i][0];
    XmlRpc::XmlRpcValue& nodes = publishers[i][1];
    for (int j = 0; j < nodes.size(); ++j) {
      if (static_cast<std::string>(nodes[j]) == ros::this_node::getName() && topic != "/rosout") {
        topics.push_back(topic);
      }
    }
  }
  std::sort(topics.begin(), topics.end());
  return topics;
}

// The message type of a published topic according to the master; empty when nobody publishes it.
inline std::string TypeOfTopic(const std::string& topic) {
  ros::master::V_TopicInfo topics;
  ros::master::getTopics(topics);
  const auto found = std::find_if(topics.begin(), topics.end(),
                                  [&](const ros::master::TopicInfo& info) { return info.name == topic; });
  return found == topics.end() ? std::string() : found->datatype;
}

}  // namespace controller_base_test

#endif  // TEST_SUPPORT_ROS_GRAPH_H_
