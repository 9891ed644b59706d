#include "benchmark/allocation_meter.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace controller_base_benchmark {
namespace {

struct Account {
  bool open = false;
  std::ptrdiff_t held = 0;  // negative when memory from before is given back
  std::ptrdiff_t peak = 0;
  std::size_t allocations = 0;
};

thread_local Account account;

void* Booked(void* memory) {
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  if (account.open) {
    ++account.allocations;
    account.held += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
    account.peak = std::max(account.peak, account.held);
  }
  return memory;
}

void Release(void* memory) noexcept {
  if (account.open && memory != nullptr) {
    account.held -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
  }
  std::free(memory);
}

std::size_t RoundedUp(std::size_t bytes, std::size_t alignment) {
  return (bytes + alignment - 1) / alignment * alignment;
}

}  // namespace

AllocationMeter::AllocationMeter() { account = {true, 0, 0, 0}; }
AllocationMeter::~AllocationMeter() { account.open = false; }
std::size_t AllocationMeter::Allocations() const { return account.allocations; }
std::size_t AllocationMeter::PeakBytes() const { return static_cast<std::size_t>(account.peak); }

}  // namespace controller_base_benchmark

// The program's own operator new, which the libraries use as well; the other forms end in these.
void* operator new(std::size_t bytes) {
  return controller_base_benchmark::Booked(std::malloc(std::max<std::size_t>(bytes, 1)));
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  const auto boundary = static_cast<std::size_t>(alignment);
  return controller_base_benchmark::Booked(
      std::aligned_alloc(boundary, controller_base_benchmark::RoundedUp(std::max<std::size_t>(bytes, 1), boundary)));
}
void operator delete(void* memory) noexcept { controller_base_benchmark::Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { controller_base_benchmark::Release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { controller_base_benchmark::Release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  controller_base_benchmark::Release(memory);
}
