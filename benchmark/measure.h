#ifndef BENCHMARK_MEASURE_H_
#define BENCHMARK_MEASURE_H_

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace controller_base_benchmark {

// How much work the program does.
struct Effort {
  bool quick = false;

  // Repetitions of something that is timed: a third of `full`, but at least three, when quick.
  int Repetitions(int full) const { return quick ? std::max(3, full / 3) : full; }
};

// Ends the program when an answer is wrong: a benchmark of wrong answers is worth nothing.
inline void Require(bool right, const std::string& what) {
  if (!right) {
    std::fprintf(stderr, "controller_base_benchmark: wrong answer: %s\n", what.c_str());
    std::exit(1);
  }
}

// Processor time of the calling thread, so that waiting for a busy machine does not count.
inline double ThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Work>
double SecondsOf(Work&& work) {
  const double begin = ThreadSeconds();
  work();
  return ThreadSeconds() - begin;
}

// The upper one of the two middle values when their number is even. `values` must not be empty.
inline double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Seconds of two things that were done in turn, pair by pair, so that other load of the machine affects both alike.
class PairedSeconds {
 public:
  void Add(double subject, double reference) {
    subject_.push_back(subject);
    reference_.push_back(reference);
    ratio_.push_back(subject / reference);
  }

  double Subject() const { return Median(subject_); }
  double Reference() const { return Median(reference_); }
  double Ratio() const { return Median(ratio_); }  // subject / reference, of pairs

  void Report(benchmark::State& state) const {
    state.counters["subject_us"] = Subject() * 1e6;
    state.counters["reference_us"] = Reference() * 1e6;
    state.counters["ratio"] = Ratio();
  }

 private:
  std::vector<double> subject_;
  std::vector<double> reference_;
  std::vector<double> ratio_;
};

// A benchmark that does `subject` and `reference` in turn and reports both and their ratio. Its time is the subject's.
template <typename Subject, typename Reference>
void RunInTurn(benchmark::State& state, Subject&& subject, Reference&& reference) {
  PairedSeconds seconds;
  while (state.KeepRunning()) {
    const double reference_seconds = SecondsOf(reference);
    const double subject_seconds = SecondsOf(subject);
    seconds.Add(subject_seconds, reference_seconds);
    state.SetIterationTime(subject_seconds);
  }
  seconds.Report(state);
}

}  // namespace controller_base_benchmark

#endif  // BENCHMARK_MEASURE_H_
