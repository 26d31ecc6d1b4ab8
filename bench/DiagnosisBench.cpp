// How long a pair of 320 x 240 pictures takes to be diagnosed, by what was done to it.
#include <cmath>

#include <benchmark/benchmark.h>

#include "bench/NaturalPaint.h"
#include "tests/diagnosis/PaintedPicture.h"

namespace {

using diagnosis::test::Coding;
using diagnosis::test::colorful;
using diagnosis::test::painted;
using diagnosis::test::toned;

void diagnosePair(benchmark::State& state, const movie::Picture& source, const movie::Picture& dest,
                  std::uint16_t destMatrix) {
  for (auto _ : state) benchmark::DoNotOptimize(diagnosis::test::findingOf(source, dest, 1, destMatrix));
}

void diagnosePair(benchmark::State& state, const movie::Picture& dest, std::uint16_t destMatrix) {
  diagnosePair(state, painted(colorful()), dest, destMatrix);
}

void theSame(benchmark::State& state) {
  diagnosePair(state, painted(colorful(), {.matrix = 6}), 6);
}
void raised(benchmark::State& state) {
  diagnosePair(state, painted(toned(colorful(), [](double value) { return std::pow(value, 1.2); })), 1);
}
void compressed(benchmark::State& state) {
  diagnosePair(state, painted(toned(colorful(), [](double value) { return (219 * value + 16) / 255; })), 1);
}
void curved(benchmark::State& state) {
  diagnosePair(state, painted(toned(colorful(), [](double value) { return value * value * (3 - 2 * value); })), 1);
}
void letterboxed(benchmark::State& state) {
  const auto paint = [](double x, double y) {
    return y < 0.125 || y > 0.875 ? diagnosis::Vector3{0, 0, 0} : colorful()(x, (y - 0.125) / 0.75);
  };
  diagnosePair(state, painted(paint), 1);
}
void anotherPicture(benchmark::State& state) {
  diagnosePair(state, painted(colorful(2.5)), 1);
}

/// What is shown of a natural picture, of which luma alone tells too little where its colours went through another
/// matrix: it is placed by luma, and then by its colours.
void diagnoseNatural(benchmark::State& state, const diagnosis::test::Paint& shown) {
  const movie::Picture source = painted([](double x, double y) { return bench::portrait(x, y, 1); });
  diagnosePair(state, source, painted(shown, {.matrix = 6}), 1);
}
void zoomedByColors(benchmark::State& state) {
  diagnoseNatural(state, [](double x, double y) { return bench::portrait(0.047 + 0.906 * x, 0.044 + 0.906 * y, 2); });
}
void letterboxedByColors(benchmark::State& state) {
  diagnoseNatural(state, [](double x, double y) {
    const double within = (y - 0.1) / 0.8;
    return within < 0 || within > 1 ? diagnosis::Vector3{0, 0, 0} : bench::portrait(x, within, 2);
  });
}
void anotherMoment(benchmark::State& state) {
  diagnoseNatural(state, [](double x, double y) { return bench::laterPortrait(x, y, 2); });
}

BENCHMARK(theSame)->Unit(benchmark::kMillisecond);
BENCHMARK(raised)->Unit(benchmark::kMillisecond);
BENCHMARK(compressed)->Unit(benchmark::kMillisecond);
BENCHMARK(curved)->Unit(benchmark::kMillisecond);
BENCHMARK(letterboxed)->Unit(benchmark::kMillisecond);
BENCHMARK(anotherPicture)->Unit(benchmark::kMillisecond);
BENCHMARK(zoomedByColors)->Unit(benchmark::kMillisecond);
BENCHMARK(letterboxedByColors)->Unit(benchmark::kMillisecond);
BENCHMARK(anotherMoment)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
