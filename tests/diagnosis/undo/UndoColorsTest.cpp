#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnosis/undo/UndoColors.h"
#include "tests/diagnosis/undo/UndoneRecipe.h"

namespace diagnosis {
namespace {

using testing::HasSubstr;

TEST(UndoColors, BringsBackEveryColourOfEveryRecipe) {
  for (const std::uint16_t matrix : {std::uint16_t{1}, std::uint16_t{6}}) {
    const ComparedIn space{.matrix = matrix};
    for (const auto& [name, recipe] : test::undoableRecipes()) {
      const UndoColors undo(recipe, space);
      const test::Change change(recipe, space);
      const Matrix3 fromRgb = fromRgbMatrix(matrix);
      double most = 0;
      test::forColors(20, [&](const Vector3& rgb) {
        const Vector3 source = product(fromRgb, rgb);
        const Vector3 back = undo.sourceOf(change(source));
        for (std::size_t i = 0; i < 3; ++i) most = std::max(most, std::abs(back[i] - source[i]));
      });
      EXPECT_LT(most, 5e-4) << name << " in matrix " << matrix;
    }
  }
}

TEST(UndoColors, SeesColoursAsApplicationsDo) {
  const UndoColors undo(test::toneRecipe(ToneStep::PowerRgb, 1.25), {});
  const Vector3 source = undo.sourceRgbOf({0.25, 0.5, 1});
  EXPECT_NEAR(source[0], std::pow(0.25, 0.8), 1e-6);
  EXPECT_NEAR(source[1], std::pow(0.5, 0.8), 1e-6);
  EXPECT_NEAR(source[2], 1, 1e-6);
}

TEST(UndoColors, KeepsWhatALineLeadsBeyondBlackAndWhite) {
  const UndoColors undo(test::gainRecipe(0.8, 0.1, 0.8), {});
  EXPECT_NEAR(undo.sourceOf({1, 0, 0})[0], 1.125, 1e-9);
  EXPECT_NEAR(undo.sourceOf({0, 0, 0})[0], -0.125, 1e-9);
}

TEST(UndoColors, LeavesChromaAloneOfWhichNothingIsLeft) {
  const UndoColors undo(test::gainRecipe(1, 0, 0.01), {});
  const Vector3 source = undo.sourceOf({0.5, 0.002, -0.001});
  EXPECT_NEAR(source[1], 0.002, 1e-6);
  EXPECT_NEAR(source[2], -0.001, 1e-6);
}

TEST(UndoColors, SaysWhatIsLost) {
  EXPECT_EQ(whyLost(test::rangeRecipe(RangeStep::None, RangeStep::ExpandRgb)),
            "It cannot be undone: the shadows and the highlights are cut off.");
  EXPECT_THAT(whyLost(test::rangeRecipe(RangeStep::ExpandRgb, RangeStep::None)), HasSubstr("cut off"));
  EXPECT_THAT(whyLost(test::gainRecipe(0.01, 0.5, 0.01)), HasSubstr("hardly anything"));
  EXPECT_EQ(whyLost(test::gainRecipe(0.5, 0, 0.5)), "");
}

}  // namespace
}  // namespace diagnosis
