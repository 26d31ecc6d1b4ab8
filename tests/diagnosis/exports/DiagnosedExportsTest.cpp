#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <set>

#include <gtest/gtest.h>

#include "tests/diagnosis/exports/Account.h"
#include "tests/diagnosis/exports/Judgement.h"
#include "tests/diagnosis/exports/Pairs.h"
#include "tests/support/MovieFixture.h"

namespace diagnosis::test {
namespace {

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

bool isTheSame(CauseKind kind) {
  return kind == CauseKind::Identical || kind == CauseKind::Same;
}

CauseKind truthOf(const Judgement& judgement) {
  return judgement.pair.recipe.truth.causes.front();
}

CauseKind foundFor(const Judgement& judgement) {
  return judgement.finding.main().kind;
}

/// The recipes hold what they say: exports are tagged as meant, and hardly any change is too small or too great to
/// count.
void expectTruths(const std::vector<Judgement>& judgements) {
  for (const Judgement& judgement : judgements) EXPECT_EQ(judgement.trouble, "") << judgement.pair.name;
  const auto uncounted = those(judgements, [](const Judgement& each) { return !each.counts; });
  EXPECT_LE(20 * uncounted.size(), judgements.size());
}

void expectNoFalseAllClear(const std::vector<Judgement>& judgements) {
  for (const Judgement& judgement : judgements) {
    if (isUnchanged(judgement.pair.recipe.truth) || judgement.difference <= 2.0) continue;
    EXPECT_FALSE(isTheSame(foundFor(judgement))) << judgement.pair.name << " differs by " << judgement.difference;
  }
}

void expectNoNumberForOtherPictures(const std::vector<Judgement>& judgements) {
  for (const Judgement& judgement : judgements) {
    if (truthOf(judgement) != CauseKind::Different) continue;
    EXPECT_EQ(nameOf(foundFor(judgement)), nameOf(CauseKind::Different)) << judgement.pair.name;
  }
}

void expectFewFalseAlarms(const std::vector<Judgement>& judgements) {
  const auto unchanged =
      those(judgements, [](const Judgement& each) { return isUnchanged(each.pair.recipe.truth) && each.counts; });
  std::string alarms;
  int count = 0;
  for (const Judgement* judgement : unchanged) {
    if (isTheSame(foundFor(*judgement))) continue;
    alarms += " " + judgement->pair.name;
    ++count;
  }
  std::cout << "\nfalse alarms: " << count << " of " << unchanged.size() << " unchanged exports\n";
  EXPECT_LE(200 * count, static_cast<int>(unchanged.size())) << alarms;
}

std::vector<const Judgement*> ofHalf(const std::vector<Judgement>& judgements, Half half) {
  return those(judgements, [&](const Judgement& judgement) { return judgement.pair.half == half; });
}

TEST(ExportCorpus, HoldsEnoughOfEveryCause) {
  std::set<std::string> names;
  int pairs = 0, unchanged = 0;
  for (const Recipe& recipe : allRecipes()) {
    EXPECT_TRUE(names.insert(recipe.name).second) << recipe.name << " stands there twice";
    pairs += 2;
    unchanged += isUnchanged(recipe.truth) ? 2 : 0;
  }
  EXPECT_GE(pairs, 200);
  EXPECT_GE(unchanged, 100);
}

TEST(ExportCorpus, GivesBothHalvesThePairsOfEveryRecipeAndNoCommonContent) {
  std::set<std::string> labels[2], recipes[2];
  for (const Batch& batch : batches("")) {
    const auto half = static_cast<std::size_t>(batch.half);
    if (batch.label == "movie") continue;
    labels[half].insert(batch.label);
    for (const Recipe& recipe : batch.recipes) recipes[half].insert(recipe.name);
  }
  EXPECT_EQ(recipes[0], recipes[1]);
  for (const std::string& label : labels[0]) EXPECT_EQ(labels[1].count(label), 0U) << label;
}

/// With LUMACHECK_EXPORTS_ONLY=PART only the pairs whose names have that part are made, and all is told of them; with
/// LUMACHECK_EXPORTS_TSV=FILE every pair's numbers are written there.
TEST(DiagnosedExports, AreToldByTheirCausesAndNeverFalselyCleared) {
  const std::string only = environment("LUMACHECK_EXPORTS_ONLY"), table = environment("LUMACHECK_EXPORTS_TSV");
  if (movie::test::realMovies().empty()) std::cout << "without real movies: " << movie::test::whyNoRealMovies() << "\n";
  std::vector<std::string> troubles;
  const std::vector<Judgement> judgements = judgedAll(batches(only), troubles);
  for (const std::string& trouble : troubles) ADD_FAILURE() << trouble;
  if (!table.empty()) writeTable(table, judgements);
  if (!only.empty()) {
    for (const Judgement& judgement : judgements) printDetails(std::cout, judgement);
    return;
  }
  printAccount(std::cout, "clips that thresholds are set on", ofHalf(judgements, Half::Fit));
  printAccount(std::cout, "other clips", ofHalf(judgements, Half::Report));

  expectTruths(judgements);
  expectNoFalseAllClear(judgements);
  expectNoNumberForOtherPictures(judgements);
  expectFewFalseAlarms(judgements);
  EXPECT_GE(scoreOf(ofHalf(judgements, Half::Report)).share(), 0.97);
}

}  // namespace
}  // namespace diagnosis::test
