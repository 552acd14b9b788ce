// Benchmarks come in groups: "group/ours" beside "group/<peer>". scripts/benchmark.sh prints the ratios.
#ifndef QEL_GRIDWORK_BENCHMARKS_COMPARE_H
#define QEL_GRIDWORK_BENCHMARKS_COMPARE_H

#include <benchmark/benchmark.h>

#include <string>

/// Registers `run`, which does the measured work once and returns something that depends on it.
template <class Run>
void add_benchmark(const std::string& group, const std::string& who, Run run) {
  benchmark::RegisterBenchmark((group + "/" + who).c_str(), [run](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(run());
  })->Unit(benchmark::kMillisecond);
}

/// Registers a program of its own, which is run once: `run` returns the seconds of CPU time that it took.
template <class Run>
void add_timed_benchmark(const std::string& group, const std::string& who, Run run) {
  benchmark::RegisterBenchmark((group + "/" + who).c_str(),
                               [run](benchmark::State& state) {
                                 for (auto _ : state) state.SetIterationTime(run());
                               })
      ->Unit(benchmark::kMillisecond)
      ->UseManualTime()
      ->Iterations(1);
}

/// Runs what was registered; inputs are made before.
inline int run_benchmarks(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

#endif
