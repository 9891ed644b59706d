#ifndef BENCHMARK_LEFT_OUT_MESSAGE_H_
#define BENCHMARK_LEFT_OUT_MESSAGE_H_

namespace controller_base_benchmark {

// A program with left_out_message.cpp has a PathMapFiller::PublishGridMap of its own, which takes the place of the
// library's and publishes nothing: the corridor's message is as large as the map and would hide what is timed. This is
// how often it was called.
int LeftOutMessages();

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_LEFT_OUT_MESSAGE_H_
