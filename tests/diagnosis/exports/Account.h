#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/diagnosis/exports/Judgement.h"

namespace diagnosis::test {

/// Shares of what was judged.
struct Score {
  int pairs = 0, right = 0;
  double share() const { return pairs == 0 ? 0 : static_cast<double>(right) / pairs; }
};

/// The judgements that a predicate holds for.
template <typename Predicate>
std::vector<const Judgement*> those(const std::vector<Judgement>& all, Predicate holds) {
  std::vector<const Judgement*> some;
  for (const Judgement& judgement : all) {
    if (holds(judgement)) some.push_back(&judgement);
  }
  return some;
}

/// Of those that count.
Score scoreOf(const std::vector<const Judgement*>& judgements);

/// Everything that is told of one half: the matrix of truths and findings, what is wrong, the exponents, and how far
/// the confidence can be relied on.
void printAccount(std::ostream& out, const std::string& title, const std::vector<const Judgement*>& judgements);

/// One pair with all its numbers, in a few lines.
void printDetails(std::ostream& out, const Judgement& judgement);

/// One line a pair, with all its numbers, for fitting.
void writeTable(const std::string& path, const std::vector<Judgement>& judgements);

}  // namespace diagnosis::test
