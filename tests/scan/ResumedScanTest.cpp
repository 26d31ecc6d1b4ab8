#include <gtest/gtest.h>

#include "tests/scan/MemoryKeeper.h"

namespace scan::test {
namespace {

struct Resumed {
  const char* name;
  std::vector<Shown> dest;
  double rate = 24;
  ScanOptions options{};
  std::vector<Shown> source = master(0, 24);
};

void PrintTo(const Resumed& row, std::ostream* out) {
  *out << row.name;
}

class ResumedScan : public testing::TestWithParam<Resumed> {};

TEST_P(ResumedScan, FindsWhatAWholeOneFinds) {
  const Resumed& row = GetParam();
  PaintedRow source(row.source, 24), dest(row.dest, row.rate);
  MemoryKeeper keeper;
  const ScanResult whole = scanned(source, dest, {}, row.options, {}, &keeper);
  ASSERT_GT(keeper.states.size(), 2U);
  EXPECT_EQ(keeper.states.back().frames.size(), whole.matches.frames.size());
  const std::size_t some = std::max<std::size_t>(1, keeper.states.size() / 3);
  for (std::size_t i = some; i < keeper.states.size(); i += some) {
    SCOPED_TRACE("from frame " + std::to_string(keeper.states[i].frames.size()));
    MemoryKeeper again(keeper.states[i]);
    expectSame(scanned(source, dest, {}, row.options, {}, &again), whole);
  }
}

std::vector<Shown> withEveryTenthDropped() {
  std::vector<Shown> frames;
  const std::vector<Shown> all = exported(master(0, 24), 1.1);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (i % 10 != 3 || i < 150) frames.push_back(all[i]);
  }
  return frames;
}

/// One frame for four seconds, so that a scan is gone on with among them.
std::vector<Shown> withOneHeld() {
  const std::vector<Shown> before = master(0, 10);
  return joined(joined(before, std::vector<Shown>(96, before.back())), master(10, 22));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ResumedScan,
    testing::Values(
        Resumed{"plain", exported(master(0, 24), 1.2)},
        Resumed{"cuts", exported(joined(joined(master(2, 10), master(14, 22)), master(6, 14)), 1.15)},
        Resumed{"leader", exported(joined(master(1000, 1004),
                                          joined(master(0, 10), joined(master(2000, 2004), master(10, 18)))))},
        Resumed{"identical_then_darker", joined(master(0, 12), exported(master(12, 24), 1.3))},
        Resumed{"drifting", withEveryTenthDropped()}, Resumed{"held", withOneHeld()},
        Resumed{
            "cut_where_the_camera_stands", exported(joined(standing(0, 9), standing(12, 20))), 24, {}, standing(0, 24)},
        Resumed{"faster", exported(master(0, 24), 0.9), 25},
        Resumed{"sampled", exported(joined(master(0, 12), master(15, 24)), 1.2), 24, {.every = 2}},
        Resumed{"part", exported(master(0, 24), 1.2), 24, {.from = 5, .to = 20}},
        Resumed{"as_times_are", exported(master(0, 24), 1.2), 24, {.align = false}}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace scan::test
