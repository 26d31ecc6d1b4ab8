// How long a pair of 320 x 240 pictures takes to be diagnosed, by what was done to it.
#include <cmath>

#include <benchmark/benchmark.h>

#include "tests/diagnosis/PaintedPicture.h"

namespace {

using diagnosis::test::Coding;
using diagnosis::test::colorful;
using diagnosis::test::painted;
using diagnosis::test::toned;

void diagnosePair(benchmark::State& state, const movie::Picture& dest, std::uint16_t destMatrix) {
  const movie::Picture source = painted(colorful());
  for (auto _ : state) benchmark::DoNotOptimize(diagnosis::test::findingOf(source, dest, 1, destMatrix));
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

BENCHMARK(theSame)->Unit(benchmark::kMillisecond);
BENCHMARK(raised)->Unit(benchmark::kMillisecond);
BENCHMARK(compressed)->Unit(benchmark::kMillisecond);
BENCHMARK(curved)->Unit(benchmark::kMillisecond);
BENCHMARK(letterboxed)->Unit(benchmark::kMillisecond);
BENCHMARK(anotherPicture)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
