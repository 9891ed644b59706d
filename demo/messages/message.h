#ifndef CONTROLLER_BASE_DEMO_MESSAGES_MESSAGE_H_
#define CONTROLLER_BASE_DEMO_MESSAGES_MESSAGE_H_

#include "recording/message.h"

namespace controller_base::demo {

using recording::DataMessage;
using recording::Message;
using recording::MessageSink;
using recording::TopicMessage;

}  // namespace controller_base::demo

#endif  // CONTROLLER_BASE_DEMO_MESSAGES_MESSAGE_H_
