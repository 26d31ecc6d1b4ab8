#include <limits>

#include "tests/scan/resume/KeptScans.h"

namespace scan::test {
namespace {

using movie::Bytes;
using movie::ByteView;

Bytes marked() {
  return {resumeMark.begin(), resumeMark.end()};
}

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) movie::append(all, part);
  return all;
}

/// Ten frames, and then a new line and ten more.
std::vector<Bytes> keptParts() {
  const TimeLine further{1, 99};
  return {marked(), subjectGroup(keptSubject()), beginningGroup(keptBeginning()),
          framesGroup(keptFrames(0, 10), {}, keptStanding(10)),
          framesGroup(keptFrames(10, 20), {&further, 1}, keptStanding(20))};
}

TEST(ResumeBytes, GiveBackWhatWasKept) {
  const Bytes bytes = joined(keptParts());
  const auto content = resumeContentOf(bytes);
  ASSERT_TRUE(content);
  EXPECT_EQ(content->whole, bytes.size());
  EXPECT_EQ(content->subject, keptSubject());
  ASSERT_TRUE(content->saved);
  const SavedScan& saved = *content->saved;
  const Beginning wanted = keptBeginning();
  EXPECT_EQ(saved.beginning.result, wanted.result);
  EXPECT_EQ(saved.beginning.lines, wanted.lines);
  EXPECT_EQ(saved.beginning.placement, wanted.placement);
  EXPECT_EQ(saved.beginning.exponent, wanted.exponent);
  EXPECT_EQ(saved.beginning.isProbed, wanted.isProbed);
  EXPECT_EQ(saved.lines, (std::vector<TimeLine>{wanted.lines[0], wanted.lines[1], {1, 99}}));
  expectFrames(saved.frames, keptFrames(0, 20));
  const Standing& standing = saved.standing;
  EXPECT_EQ(standing.bearing.course.line, (TimeLine{1, 4.5}));
  EXPECT_EQ(standing.bearing.course.exponent, 1.5);
  EXPECT_EQ(standing.bearing.line, 1);
  EXPECT_EQ(standing.bearing.centre, -3);
  EXPECT_EQ(standing.bearing.aside, 5);
  EXPECT_EQ(standing.bearing.nearer, 1.5F);
  EXPECT_EQ(standing.bearing.usual.mean, 0.75F);
  EXPECT_EQ(standing.bearing.usual.frames, 60);
  EXPECT_EQ(standing.bearing.settledBefore, 20U);
  EXPECT_EQ(standing.state.source, 77);
  EXPECT_EQ(standing.state.away, -2);
  EXPECT_FALSE(standing.state.none);
}

TEST(ResumeBytes, CutAnywhereGiveWhatIsWholeBefore) {
  const std::vector<Bytes> parts = keptParts();
  const Bytes bytes = joined(parts);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    SCOPED_TRACE(size);
    const auto content = resumeContentOf(ByteView(bytes).first(size));
    ASSERT_TRUE(content);
    std::size_t whole = 0, count = 0;
    while (count < parts.size() && whole + parts[count].size() <= size) whole += parts[count++].size();
    EXPECT_EQ(content->whole, whole);
    EXPECT_EQ(content->subject.has_value(), count > 1);
    EXPECT_EQ(content->saved.has_value(), count > 2);
    if (content->saved) {
      EXPECT_EQ(content->saved->frames.size(), count > 3 ? 10U : 0U);
    }
  }
}

TEST(ResumeBytes, ChangedAnywhereGiveWhatIsWholeBefore) {
  const std::vector<Bytes> parts = keptParts();
  const Bytes bytes = joined(parts);
  const std::size_t first = parts[0].size() + parts[1].size() + parts[2].size();
  for (std::size_t i = first; i < bytes.size(); ++i) {
    Bytes changed = bytes;
    changed[i] ^= 0x10;
    const auto content = resumeContentOf(changed);
    ASSERT_TRUE(content);
    EXPECT_EQ(content->whole, i < first + parts[3].size() ? first : first + parts[3].size()) << i;
  }
}

TEST(ResumeBytes, OfAnotherKindAreForeign) {
  Bytes bytes = joined(keptParts());
  bytes[3] ^= 1;
  EXPECT_EQ(resumeContentOf(bytes).error(), ResumeFault::Foreign);
  EXPECT_EQ(resumeContentOf(Bytes{'m', 'o', 'o', 'v'}).error(), ResumeFault::Foreign);
  EXPECT_TRUE(resumeContentOf({})) << "nothing was written yet";
}

struct Wrong {
  const char* name;
  std::function<void(ResumeSubject&, Beginning&, FrameMatch&, Standing&)> put;
  std::size_t kept;  ///< groups that are still taken
};

void PrintTo(const Wrong& row, std::ostream* out) {
  *out << row.name;
}

class WrongResumeBytes : public testing::TestWithParam<Wrong> {};

/// Whoever writes the right sum may write wrong numbers all the same.
TEST_P(WrongResumeBytes, AreNotTaken) {
  ResumeSubject subject = keptSubject();
  Beginning beginning = keptBeginning();
  FrameMatch frame = keptFrame(1);
  Standing standing = keptStanding(1);
  GetParam().put(subject, beginning, frame, standing);
  const std::vector<Bytes> parts{marked(), subjectGroup(subject), beginningGroup(beginning),
                                 framesGroup({&frame, 1}, {}, standing)};
  std::size_t whole = parts[0].size();
  for (std::size_t i = 1; i <= GetParam().kept; ++i) whole += parts[i].size();
  const auto content = resumeContentOf(joined(parts));
  ASSERT_TRUE(content);
  EXPECT_EQ(content->whole, whole);
}

constexpr double notNumber = std::numeric_limits<double>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongResumeBytes,
    testing::Values(
        Wrong{"nothing", [](auto&, auto&, auto&, auto&) {}, 3},
        Wrong{"no_frames", [](auto& subject, auto&, auto&, auto&) { subject.end = subject.first; }, 0},
        Wrong{"frames_behind_the_end", [](auto& subject, auto&, auto&, auto&) { subject.end = 901; }, 0},
        Wrong{"none_of_so_many", [](auto& subject, auto&, auto&, auto&) { subject.every = 0; }, 0},
        Wrong{"no_line", [](auto&, auto& beginning, auto&, auto&) { beginning.lines.clear(); }, 1},
        Wrong{"a_line_without_a_rate",
              [](auto&, auto& beginning, auto&, auto&) { beginning.lines[0].rate = notNumber; }, 1},
        Wrong{"an_empty_region", [](auto&, auto& beginning, auto&, auto&) { beginning.placement.dest.right = 0; }, 1},
        Wrong{"no_exponent", [](auto&, auto& beginning, auto&, auto&) { beginning.exponent = 0; }, 1},
        Wrong{"a_frame_of_none", [](auto&, auto&, auto& frame, auto&) { frame.source = 1000; }, 2},
        Wrong{"a_frame_below_none", [](auto&, auto&, auto& frame, auto&) { frame.source = -2; }, 2},
        Wrong{"a_frame_on_no_line", [](auto&, auto&, auto& frame, auto&) { frame.line = 2; }, 2},
        Wrong{"a_weight_below_nothing", [](auto&, auto&, auto& frame, auto&) { frame.weight = -1; }, 2},
        Wrong{"standing_on_no_line", [](auto&, auto&, auto&, auto& standing) { standing.bearing.line = 2; }, 2},
        Wrong{"standing_far_away", [](auto&, auto&, auto&, auto& standing) { standing.bearing.centre = 1LL << 60; }, 2},
        Wrong{"standing_by_more_frames_than_count",
              [](auto&, auto&, auto&, auto& standing) { standing.bearing.usual.frames = 97; }, 2},
        Wrong{"standing_behind_the_end",
              [](auto&, auto&, auto&, auto& standing) { standing.bearing.settledBefore = 401; }, 2},
        Wrong{"standing_on_no_exponent",
              [](auto&, auto&, auto&, auto& standing) { standing.bearing.course.exponent = notNumber; }, 2}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ResumeBytes, HoldNoMoreFramesThanTheScan) {
  std::vector<Bytes> parts = keptParts();
  ASSERT_EQ(keptSubject().frames(), 400U);
  parts.push_back(framesGroup(keptFrames(20, 400), {}, keptStanding(400)));
  EXPECT_EQ(resumeContentOf(joined(parts))->saved->frames.size(), 400U);
  parts.push_back(framesGroup(keptFrames(400, 401), {}, keptStanding(400)));
  EXPECT_EQ(resumeContentOf(joined(parts))->saved->frames.size(), 400U);
}

TEST(ResumeBytes, StandInTheirOrder) {
  const std::vector<Bytes> parts = keptParts();
  const auto wholeOf = [&](const std::vector<std::size_t>& order) {
    Bytes bytes;
    for (const std::size_t each : order) movie::append(bytes, parts[each]);
    return resumeContentOf(bytes)->whole;
  };
  EXPECT_EQ(wholeOf({0, 2, 1}), parts[0].size());
  EXPECT_EQ(wholeOf({0, 1, 1}), parts[0].size() + parts[1].size());
  EXPECT_EQ(wholeOf({0, 1, 3}), parts[0].size() + parts[1].size());
  EXPECT_EQ(wholeOf({0, 1, 2, 2}), parts[0].size() + parts[1].size() + parts[2].size());
}

}  // namespace
}  // namespace scan::test
