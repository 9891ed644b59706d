#ifndef BENCHMARK_ALLOCATION_METER_H_
#define BENCHMARK_ALLOCATION_METER_H_

#include <cstddef>

namespace controller_base_benchmark {

// Counts what its thread takes by operator new while it lives. One at a time in a thread.
class AllocationMeter {
 public:
  AllocationMeter();
  ~AllocationMeter();
  AllocationMeter(const AllocationMeter&) = delete;
  AllocationMeter& operator=(const AllocationMeter&) = delete;

  // The most that was held at once, in bytes.
  std::size_t PeakBytes() const;

  // How often memory was taken.
  std::size_t Allocations() const;
};

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_ALLOCATION_METER_H_
