#pragma once

#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/scan/PaintedScan.h"

namespace scan::test {

/// Keeps a scan in memory, as it was every time that all frames were final.
class MemoryKeeper final : public ScanKeeper {
 public:
  MemoryKeeper() = default;
  explicit MemoryKeeper(SavedScan saved) : from_(std::move(saved)) {}

  const SavedScan* saved() const override { return from_ ? &*from_ : nullptr; }
  void begun(const Beginning& beginning) override { states.push_back({beginning, beginning.lines, {}, {}}); }
  void settled(const Matches& matches, const std::vector<TimeLine>& lines, const Standing& standing) override {
    if (states.empty()) return;
    states.push_back({states.front().beginning, lines, matches.frames, standing});
  }

  std::vector<SavedScan> states;

 private:
  std::optional<SavedScan> from_;
};

inline auto valuesOf(const FrameMatch& match) {
  return std::tuple(match.source, match.line, match.identical, match.blended, match.flat, match.distance,
                    match.isMeasured() ? match.logExponent : 0, match.spread, match.weight, match.level);
}

inline void expectSame(const ScanResult& one, const ScanResult& other) {
  ASSERT_EQ(one.matches.frames.size(), other.matches.frames.size());
  for (std::size_t i = 0; i < one.matches.frames.size(); ++i) {
    ASSERT_EQ(valuesOf(one.matches.frames[i]), valuesOf(other.matches.frames[i])) << i;
  }
  ASSERT_EQ(one.segments.size(), other.segments.size());
  for (std::size_t i = 0; i < one.segments.size(); ++i) {
    EXPECT_EQ(one.segments[i].dest, other.segments[i].dest);
    EXPECT_EQ(one.segments[i].exponent, other.segments[i].exponent);
    EXPECT_EQ(one.segments[i].confidence(), other.segments[i].confidence());
  }
  EXPECT_EQ(one.map.unmatched, other.map.unmatched);
  EXPECT_EQ(one.map.dropped.size(), other.map.dropped.size());
  EXPECT_EQ(one.finding.main().kind, other.finding.main().kind);
  EXPECT_EQ(one.finding.difference, other.finding.difference);
}

}  // namespace scan::test
