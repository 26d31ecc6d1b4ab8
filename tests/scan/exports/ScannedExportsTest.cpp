#include <cstdlib>
#include <exception>
#include <iostream>

#include <gtest/gtest.h>

#include "tests/scan/exports/Verdicts.h"

namespace scan::test {
namespace {

/// Every eighteenth recipe, for they take minutes all together; with LUMACHECK_SCANS_ONLY=PART all pairs whose names
/// have that part: "/" for all there are, and "//" for every recipe of every master.
std::vector<ScanVerdict> judgedScans(Half half) {
  constexpr std::size_t apart = 18;
  const char* const given = std::getenv("LUMACHECK_SCANS_ONLY");
  const bool everyPair = given != nullptr && std::string(given) == "//";
  const std::string only = given == nullptr || everyPair ? "" : given;
  std::vector<Master> some;
  for (const Master& master : masters()) {
    if (master.half == half) some.push_back(master);
  }
  std::vector<ScanVerdict> verdicts;
  std::size_t number = 0;
  for (const ScanRecipe& recipe : scanRecipes()) {
    const std::size_t place = number++;
    if (given == nullptr && (recipe.isHard || place % apart != (half == Half::Fit ? 0 : 5))) continue;
    const Master& chosen = some[place % some.size()];
    for (const Master& master : recipe.everyMaster || everyPair ? some : std::vector<Master>{chosen}) {
      if ((recipe.name + "/" + master.name).find(only) == std::string::npos) continue;
      try {
        verdicts.push_back(verdictOn(master, recipe));
        printWrong(std::cout, verdicts.back());
      } catch (const std::exception& error) {
        ADD_FAILURE() << recipe.name << "/" << master.name << ": " << error.what();
      }
    }
  }
  return verdicts;
}

double shareOf(const std::vector<ScanVerdict>& verdicts, bool (*holds)(const ScanVerdict&)) {
  std::size_t count = 0;
  for (const ScanVerdict& each : verdicts) count += holds(each) ? 1 : 0;
  return verdicts.empty() ? 1 : static_cast<double>(count) / static_cast<double>(verdicts.size());
}

void expectGoals(const std::vector<ScanVerdict>& verdicts) {
  const auto share = [&](bool (*holds)(const ScanVerdict&)) { return shareOf(verdicts, holds); };
  EXPECT_EQ(share([](const ScanVerdict& each) { return !each.toBeRefused || each.refusedRightly; }), 1);
  EXPECT_EQ(share([](const ScanVerdict& each) { return each.identicalRight; }), 1);
  EXPECT_GE(share([](const ScanVerdict& each) { return each.mapRight(); }), 0.97);
  EXPECT_GE(share([](const ScanVerdict& each) { return each.causeRight; }), 0.97);
  EXPECT_GE(share([](const ScanVerdict& each) { return each.exponentsRight(); }), 0.97);
  EXPECT_GE(share([](const ScanVerdict& each) { return each.cutsRight(); }), 0.97);
  EXPECT_GE(share([](const ScanVerdict& each) { return each.falseSegments == 0; }), 0.97);
  EXPECT_GE(share([](const ScanVerdict& each) { return each.regionRight(); }), 0.97);
}

TEST(ScannedExports, AreToldRightlyOfClipsThatThresholdsAreSetOn) {
  const std::vector<ScanVerdict> verdicts = judgedScans(Half::Fit);
  printScans(std::cout, "clips that thresholds are set on", verdicts);
  expectGoals(thatCount(verdicts));
}

TEST(ScannedExports, AreToldRightlyOfOtherClips) {
  const std::vector<ScanVerdict> verdicts = judgedScans(Half::Report);
  printScans(std::cout, "other clips", verdicts);
  expectGoals(thatCount(verdicts));
}

}  // namespace
}  // namespace scan::test
