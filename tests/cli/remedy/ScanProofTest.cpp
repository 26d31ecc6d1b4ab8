#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/remedy/ScanProof.h"
#include "tests/support/TemporaryFolder.h"

namespace cli {
namespace {

using testing::HasSubstr;

/// So many frames of a twenty-fifth of a second.
class TimedRow final : public scan::FrameRow {
 public:
  explicit TimedRow(std::size_t frames) : frames_(frames) {}
  std::unique_ptr<scan::FrameRow> copy() const override { return std::make_unique<TimedRow>(frames_); }
  scan::RowShape shape() const override { return {.frames = frames_, .seconds = timeOf(frames_)}; }
  double timeOf(std::size_t frame) const override { return static_cast<double>(frame) / 25; }
  std::vector<std::size_t> syncFrames() const override { return {}; }
  movie::Result<scan::Thumbnail> thumbnail(std::size_t /*frame*/) override { return scan::Thumbnail(); }

 private:
  std::size_t frames_;
};

TEST(ScanProof, ShowsTenSecondsAroundAFrame) {
  const TimedRow row(3000);
  EXPECT_EQ(proofFrames(row, {0, 3000}, 1000), (scan::FrameRange{875, 1125}));
  EXPECT_EQ(proofFrames(row, {0, 3000}, 10), (scan::FrameRange{0, 250}));
  EXPECT_EQ(proofFrames(row, {0, 3000}, 2999), (scan::FrameRange{2750, 3000}));
}

TEST(ScanProof, StaysWithinItsSegment) {
  const TimedRow row(3000);
  EXPECT_EQ(proofFrames(row, {990, 3000}, 1000), (scan::FrameRange{990, 1240}));
  EXPECT_EQ(proofFrames(row, {500, 1010}, 1000), (scan::FrameRange{760, 1010}));
  EXPECT_EQ(proofFrames(row, {990, 1010}, 1000), (scan::FrameRange{990, 1010}));
}

TEST(ScanProof, IsAMovFile) {
  const auto file = ProofFile::at("/tmp/proof.mp4", {});
  ASSERT_FALSE(file);
  EXPECT_EQ(file.error().message, "/tmp/proof.mp4: A proof is a .mov file.");
}

TEST(ScanProblem, AFileOfAScanTakesNoMoviesPlace) {
  const movie::test::TemporaryFolder folder;
  const std::string source = folder.add("source.mov", {1}), dest = folder.add("dest.mov", {2});
  const auto place = placeFor(
      folder.path("../") + std::filesystem::path(folder.path("")).parent_path().filename().string() + "/dest.mov",
      "The table", {source, dest});
  ASSERT_FALSE(place);
  EXPECT_THAT(place.error().message, HasSubstr("dest.mov: The table would take the place of a movie that is scanned."));
  EXPECT_TRUE(placeFor(folder.path("other.mov"), "The table", {source, dest}));
}

TEST(ScanProblem, KnowsAFileByItsEndInAnyCase) {
  EXPECT_TRUE(hasEnding("a.MoV", ".mov"));
  EXPECT_FALSE(hasEnding("a.mov/b", ".mov"));
  EXPECT_FALSE(hasEnding("mov", ".mov"));
}

TEST(ScanProof, TellsWhatDiffersStill) {
  const FrameClock clock = [](std::size_t frame) { return "#" + std::to_string(frame); };
  ScanProof proof;
  proof.path = "proof.mov";
  proof.frames = {5, 255};
  proof.before = {.difference = 14.94, .causes = {{.kind = diagnosis::CauseKind::Power}}};
  proof.after = {.difference = 0.26, .causes = {{.kind = diagnosis::CauseKind::Same}}};
  EXPECT_EQ(proofLine(proof, clock),
            "Proof: proof.mov, #5 - #255. It differs from the source by 0.3 codes, the destination there by 14.9: the "
            "same.\n");
  proof.why = "There is nothing to undo.";
  EXPECT_EQ(proofLine(proof, clock), "Proof: none. There is nothing to undo.\n");
}

}  // namespace
}  // namespace cli
