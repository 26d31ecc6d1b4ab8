// The frame analysis of a natural 320 x 240 pair: the form that ships against its literal per-pixel form. Both run in
// turns within one process, so that the last line, their ratio, does not depend on the machine.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <limits>

#include <benchmark/benchmark.h>

#include "check/FrameAnalysis.h"
#include "tests/check/LiteralFrameAnalysis.h"
#include "tests/check/NaturalFrames.h"

namespace {

using check::GammaEstimate;
using check::RgbFrameBitmap;

constexpr int width = 320, height = 240;

struct Pair {
  RgbFrameBitmap source{naturalFrame(width, height, 1)};
  RgbFrameBitmap dest{raisedFrame(*source.plainFrame(), 1.25, 2)};
};

const Pair& pair() {
  static const Pair instance;
  return instance;
}

using Analysis = GammaEstimate (*)(const check::FrameBitmap&, const check::FrameBitmap&);

void analyse(benchmark::State& state, Analysis analysis) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(analysis(pair().source, pair().dest));
  }
}

/// Of `calls` calls, in clock ticks. Processor time: what else runs on the machine does not count.
double timeOf(Analysis analysis, int calls) {
  const std::clock_t start = std::clock();
  for (int i = 0; i < calls; ++i) benchmark::DoNotOptimize(analysis(pair().source, pair().dest));
  return static_cast<double>(std::clock() - start);
}

}  // namespace

BENCHMARK_CAPTURE(analyse, fast, &check::gammaShiftForSourceBitmap)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(analyse, literal, &literal::gammaShiftForSourceBitmap)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  pair();
  const double firstRun = timeOf(&check::gammaShiftForSourceBitmap, 1);  // with its table of logarithms still empty
  benchmark::RunSpecifiedBenchmarks();

  // In turns, and of each form the turn least disturbed.
  constexpr int rounds = 40, calls = 8;
  double fast = std::numeric_limits<double>::max(), literalForm = fast;
  for (int i = 0; i < rounds; ++i) {
    fast = std::min(fast, timeOf(&check::gammaShiftForSourceBitmap, calls));
    literalForm = std::min(literalForm, timeOf(&literal::gammaShiftForSourceBitmap, calls));
  }
  std::printf("first run/literal: %.2f\n", firstRun * calls / literalForm);
  std::printf("ratio fast/literal: %.2f\n", fast / literalForm);
  return 0;
}
