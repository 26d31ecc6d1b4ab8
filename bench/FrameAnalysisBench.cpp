// The frame analysis of a natural 320 x 240 pair: the form that ships against its literal per-pixel form. Both run in
// turns within one process, so that the last line, their ratio, does not depend on the machine.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

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

double timeOf(Analysis analysis) {
  const std::clock_t start = std::clock();  // processor time: what else runs on the machine does not count
  benchmark::DoNotOptimize(analysis(pair().source, pair().dest));
  return static_cast<double>(std::clock() - start);
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

}  // namespace

BENCHMARK_CAPTURE(analyse, fast, &check::gammaShiftForSourceBitmap)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(analyse, literal, &literal::gammaShiftForSourceBitmap)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  pair();
  const double firstRun = timeOf(&check::gammaShiftForSourceBitmap);  // with its table of logarithms still empty
  benchmark::RunSpecifiedBenchmarks();

  constexpr int rounds = 51;
  std::vector<double> fast, literalForm;
  for (int i = 0; i < rounds; ++i) {
    fast.push_back(timeOf(&check::gammaShiftForSourceBitmap));
    literalForm.push_back(timeOf(&literal::gammaShiftForSourceBitmap));
  }
  std::printf("first run/literal: %.2f\n", firstRun / median(literalForm));
  std::printf("ratio fast/literal: %.2f\n", median(fast) / median(literalForm));
  return 0;
}
