#include <algorithm>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnosis/undo/CubeTable.h"
#include "diagnosis/undo/UndoColors.h"
#include "tests/diagnosis/undo/UndoneRecipe.h"

namespace diagnosis {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr double code = 1.0 / 255;

CubeTable undoTable(const Recipe& recipe) {
  const UndoColors undo(recipe, {});
  return cubeTableOf([&](const Vector3& rgb) { return undo.sourceRgbOf(rgb); });
}

/// Made once: two tests look at the same tables.
const CubeTable& undoTable(const test::NamedRecipe& named) {
  static std::map<std::string, CubeTable> made;
  const auto found = made.find(named.name);
  return found != made.end() ? found->second : made.emplace(named.name, undoTable(named.recipe)).first->second;
}

bool isWithin(const Vector3& rgb) {
  return std::all_of(rgb.begin(), rgb.end(), [](double value) { return value >= 0 && value <= 1; });
}

/// By how much what comes back is off: of colours that a table can see, in codes.
double offBy(const Recipe& recipe, const CubeTable& table) {
  double most = 0;
  const test::Change change(recipe, {});
  const Matrix3 toRgb = toRgbMatrix(1), fromRgb = fromRgbMatrix(1);
  test::forColors(40, [&](const Vector3& rgb) {
    const Vector3 dest = product(toRgb, change(product(fromRgb, rgb)));
    if (!isWithin(dest)) return;
    const Vector3 back = lookedUp(table, dest);
    for (std::size_t i = 0; i < 3; ++i) most = std::max(most, std::abs(std::clamp(back[i], 0.0, 1.0) - rgb[i]) / code);
  });
  return most;
}

TEST(CubeTable, BringsBackWhatARecipeChanged) {
  for (const test::NamedRecipe& named : test::undoableRecipes()) {
    const auto& [name, recipe] = named;
    const CubeTable& table = undoTable(named);
    const double off = offBy(recipe, table);
    std::cout << name << ": " << (table.kind == CubeTable::Kind::Curve ? "curve" : "cube") << " of " << table.size
              << ", off by " << off << " codes\n";
    EXPECT_LE(off, 1) << name;
  }
}

TEST(CubeTable, IsACurveWhereChannelsGoAloneAndAlike) {
  for (const test::NamedRecipe& named : test::undoableRecipes()) {
    const std::string_view name = named.name;
    const bool alike = name.starts_with("power-rgb") || name == "srgb-as-709" || name == "power-as-srgb" ||
                       name == "compressed-rgb" || name == "gain";
    EXPECT_EQ(undoTable(named).kind, alike ? CubeTable::Kind::Curve : CubeTable::Kind::Cube) << name;
  }
}

TEST(CubeTable, HasMorePointsWhereTheyAreNeeded) {
  EXPECT_EQ(undoTable(test::toneRecipe(ToneStep::PowerLuma, 1.2)).size, 33U);
  EXPECT_EQ(undoTable(test::toneRecipe(ToneStep::PowerLuma, 1.6)).size, 65U);
  EXPECT_EQ(undoTable(test::gainRecipe(0.85, 0, 0.85)).size, 1024U);
  EXPECT_GT(undoTable(test::toneRecipe(ToneStep::PowerRgb, 1.6)).size, 4096U);
}

TEST(CubeTable, KeepsWhatLiesBeyondSoThatColoursBesideItAreRight) {
  const CubeTable table = undoTable(test::matrixRecipe(6, 1));
  const auto isBeyond = [](const Vector3& point) { return !isWithin(point); };
  EXPECT_TRUE(std::any_of(table.points.begin(), table.points.end(), isBeyond));
}

/// Three numbers that tell red, green and blue apart.
CubeTable mixing() {
  return cubeTableOf([](const Vector3& rgb) { return Vector3{rgb[2], 0.5 * rgb[0], 1 - rgb[1]}; });
}

TEST(CubeTable, IsLookedUpBetweenItsPointsAndAtItsEnds) {
  for (const Vector3& rgb : {Vector3{0, 0, 0}, {1, 1, 1}, {0.01, 0.5, 0.999}, {0.7, 0.2, 0.4}}) {
    const Vector3 found = lookedUp(mixing(), rgb);
    EXPECT_NEAR(found[0], rgb[2], 1e-9);
    EXPECT_NEAR(found[1], rgb[0] / 2, 1e-9);
    EXPECT_NEAR(found[2], 1 - rgb[1], 1e-9);
  }
  EXPECT_EQ(lookedUp(mixing(), {-1, 0, 2}), lookedUp(mixing(), {0, 0, 1}));
  const CubeTable curve = cubeTableOf([](const Vector3& rgb) { return Vector3{1 - rgb[0], 1 - rgb[1], 1 - rgb[2]}; });
  EXPECT_NEAR(lookedUp(curve, {0.123, 2, -1})[0], 0.877, 1e-9);
  EXPECT_EQ(lookedUp(curve, {0.5, 2, -1})[1], 0);
}

TEST(CubeTable, IsWrittenWithRedVaryingFastest) {
  const std::string text = cubeText(mixing(), "A title", {"One remark", "another"});
  EXPECT_THAT(text, StartsWith("TITLE \"A title\"\n# One remark\n# another\nLUT_3D_SIZE 33\n"
                               "DOMAIN_MIN 0.0 0.0 0.0\nDOMAIN_MAX 1.0 1.0 1.0\n"
                               "0.0000000 0.0000000 1.0000000\n0.0000000 0.0156250 1.0000000\n"));
  std::istringstream lines(text.substr(text.find("1.0 1.0 1.0\n") + 12));
  std::size_t count = 0;
  double red = 0, green = 0, blue = 0;
  while (lines >> red >> green >> blue) ++count;
  EXPECT_EQ(count, 33U * 33U * 33U);
  EXPECT_EQ(red, 1);
  EXPECT_EQ(green, 0.5);
  EXPECT_EQ(blue, 0);
}

TEST(CubeTable, IsWrittenAsACurveOfThreeColumns) {
  const std::string text = cubeText(undoTable(test::gainRecipe(0.5, 0, 0.5)), "Half", {});
  EXPECT_THAT(text, StartsWith("TITLE \"Half\"\nLUT_1D_SIZE 1024\nDOMAIN_MIN"));
  EXPECT_THAT(text, HasSubstr("\n2.0000000 2.0000000 2.0000000\n"));
}

}  // namespace
}  // namespace diagnosis
