#include "tests/diagnosis/exports/Account.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>

namespace diagnosis::test {
namespace {

constexpr std::size_t kinds = 10;

template <typename... Values>
std::string formatted(const char* format, Values... values) {
  char text[240];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

std::string numberOr(const std::optional<double>& number, const char* none) {
  return number ? formatted("%.3f", *number) : none;
}

std::string named(const std::optional<Where>& where) {
  static const char* const names[] = {"codes", "flags", "tags"};
  return where ? names[static_cast<std::size_t>(*where)] : "-";
}

std::string named(const std::optional<Direction>& direction) {
  static const char* const names[] = {"darker", "lighter", "compressed", "expanded"};
  return direction ? names[static_cast<std::size_t>(*direction)] : "-";
}

void printMatrix(std::ostream& out, const std::vector<const Judgement*>& judgements) {
  std::map<std::string, std::array<int, kinds>> rows;
  for (const Judgement* judgement : judgements) {
    if (!judgement->counts) continue;
    ++rows[nameOf(judgement->pair.recipe.truth)][static_cast<std::size_t>(judgement->finding.main().kind)];
  }
  out << formatted("%-14s", "truth \\ found");
  for (std::size_t kind = 0; kind < kinds; ++kind) {
    out << formatted("%11s", nameOf(static_cast<CauseKind>(kind)).c_str());
  }
  out << "\n";
  for (const auto& [truth, row] : rows) {
    out << formatted("%-14s", truth.c_str());
    for (const int count : row) out << (count == 0 ? formatted("%11s", ".") : formatted("%11d", count));
    out << "\n";
  }
}

void printWrong(std::ostream& out, const std::vector<const Judgement*>& judgements) {
  for (const Judgement* judgement : judgements) {
    if (judgement->right || !judgement->counts) continue;
    const Cause& found = judgement->finding.main();
    out << formatted("  wrong: %-46s is %-12s found %-10s confidence %.2f residual %.2f exponent %s difference %.1f\n",
                     judgement->pair.name.c_str(), nameOf(judgement->pair.recipe.truth).c_str(),
                     nameOf(found.kind).c_str(), found.confidence, found.residual,
                     numberOr(found.exponent, "-").c_str(), judgement->difference);
  }
}

void printSmall(std::ostream& out, const std::vector<const Judgement*>& judgements) {
  int count = 0;
  for (const Judgement* judgement : judgements) {
    if (judgement->counts) continue;
    ++count;
    out << formatted("  not counted, differs by %.2f codes: %s (%s, found %s)\n", judgement->difference,
                     judgement->pair.name.c_str(), nameOf(judgement->pair.recipe.truth).c_str(),
                     nameOf(judgement->finding.main().kind).c_str());
  }
  if (count > 0) out << "  " << count << " pairs are not counted\n";
}

/// Of what is told rightly: whether so is where and which way.
void printParticulars(std::ostream& out, const std::vector<const Judgement*>& judgements) {
  int twofold = 0, bothTold = 0;
  for (const Judgement* judgement : judgements) {
    const Truth& truth = judgement->pair.recipe.truth;
    const Cause& found = judgement->finding.main();
    if (!judgement->right || !judgement->counts) continue;
    if (truth.causes.size() > 1) {
      ++twofold;
      bothTold += judgement->finding.causes.size() > 1 ? 1 : 0;
    }
    const bool wrongPlace = truth.where && found.where != truth.where;
    const bool wrongWay = truth.direction && found.direction != truth.direction;
    if (!wrongPlace && !wrongWay) continue;
    out << formatted("  right cause, but %s %s (%s %s): %s\n", named(found.where).c_str(),
                     named(found.direction).c_str(), named(truth.where).c_str(), named(truth.direction).c_str(),
                     judgement->pair.name.c_str());
  }
  if (twofold > 0) out << "  of " << twofold << " pairs with two causes both are told for " << bothTold << "\n";
}

void printExponents(std::ostream& out, const std::vector<const Judgement*>& judgements) {
  std::vector<std::pair<double, std::string>> errors;
  int within = 0;
  for (const Judgement* judgement : judgements) {
    const Truth& truth = judgement->pair.recipe.truth;
    const Cause& found = judgement->finding.main();
    if (!truth.exponent || !found.exponent || found.kind != CauseKind::Power) continue;
    errors.emplace_back(std::abs(*found.exponent - *truth.exponent), judgement->pair.name);
    if (found.exponentInterval && found.exponentInterval->low <= *truth.exponent &&
        *truth.exponent <= found.exponentInterval->high) {
      ++within;
    }
  }
  if (errors.empty()) return;
  std::sort(errors.begin(), errors.end());
  const auto& [worst, name] = errors.back();
  out << formatted("exponents: %zu, median error %.4f, 90 %% within %.4f, worst %.4f (%s); in their intervals %d\n",
                   errors.size(), errors[errors.size() / 2].first, errors[errors.size() * 9 / 10].first, worst,
                   name.c_str(), within);
}

void printTimes(std::ostream& out, const std::vector<const Judgement*>& judgements) {
  std::vector<double> times;
  for (const Judgement* judgement : judgements) times.push_back(judgement->milliseconds);
  if (times.empty()) return;
  std::sort(times.begin(), times.end());
  out << formatted("milliseconds: median %.1f, 90 %% within %.1f, most %.1f\n", times[times.size() / 2],
                   times[times.size() * 9 / 10], times.back());
}

void printCalibration(std::ostream& out, const std::vector<const Judgement*>& judgements) {
  struct Bin {
    int pairs = 0, right = 0;
    double confidence = 0;
  };
  std::array<Bin, 10> bins;
  for (const Judgement* judgement : judgements) {
    if (!judgement->counts) continue;
    const double confidence = judgement->finding.main().confidence;
    Bin& bin = bins[static_cast<std::size_t>(std::clamp(confidence * 10, 0.0, 9.0))];
    ++bin.pairs;
    bin.right += judgement->right ? 1 : 0;
    bin.confidence += confidence;
  }
  out << "confidence    pairs   mean   right\n";
  for (std::size_t i = 0; i < bins.size(); ++i) {
    const Bin& bin = bins[i];
    const int n = std::max(1, bin.pairs);
    out << formatted("%.1f to %.1f %8d", 0.1 * static_cast<double>(i), 0.1 * static_cast<double>(i + 1), bin.pairs);
    out << (bin.pairs == 0 ? "\n"
                           : formatted("  %.3f   %.3f\n", bin.confidence / n, static_cast<double>(bin.right) / n));
  }
}

}  // namespace

Score scoreOf(const std::vector<const Judgement*>& judgements) {
  Score score;
  for (const Judgement* judgement : judgements) {
    if (!judgement->counts) continue;
    ++score.pairs;
    score.right += judgement->right ? 1 : 0;
  }
  return score;
}

void printAccount(std::ostream& out, const std::string& title, const std::vector<const Judgement*>& judgements) {
  const Score score = scoreOf(judgements);
  out << formatted("\n%s: %d pairs, %d right, %.1f %%\n", title.c_str(), score.pairs, score.right, 100 * score.share());
  printMatrix(out, judgements);
  printWrong(out, judgements);
  printSmall(out, judgements);
  printParticulars(out, judgements);
  printExponents(out, judgements);
  printTimes(out, judgements);
  printCalibration(out, judgements);
}

void printDetails(std::ostream& out, const Judgement& judgement) {
  const Finding& finding = judgement.finding;
  const Placement& placement = finding.correspondence.placement;
  out << judgement.pair.name << ": " << nameOf(judgement.pair.recipe.truth) << (judgement.right ? ", right" : ", WRONG")
      << "\n  " << judgement.pair.source << "\n  " << judgement.pair.dest << "\n";
  for (const Cause& cause : finding.causes) {
    out << formatted("  %-10s confidence %.3f residual %.3f exponent %s gain %s offset %s %s %s\n",
                     nameOf(cause.kind).c_str(), cause.confidence, cause.residual,
                     numberOr(cause.exponent, "-").c_str(), numberOr(cause.gain, "-").c_str(),
                     numberOr(cause.offset, "-").c_str(), named(cause.direction).c_str(), named(cause.where).c_str());
  }
  out << formatted("  score %.4f, difference %.2f, true difference %.2f, %.1f ms\n", finding.correspondence.score,
                   finding.difference, judgement.difference, judgement.milliseconds);
  if (!placement.isPlain()) {
    out << formatted("  source %.3f %.3f %.3f %.3f", placement.source.left, placement.source.top,
                     placement.source.right, placement.source.bottom)
        << formatted(" dest %.3f %.3f %.3f %.3f turned %d%d%d\n", placement.dest.left, placement.dest.top,
                     placement.dest.right, placement.dest.bottom, placement.transposed, placement.mirroredX,
                     placement.mirroredY);
  }
  for (const CurvePoint& point : finding.curve) out << formatted("  %.1f>%.1f", point.source, point.dest);
  out << "\n";
}

void writeTable(const std::string& path, const std::vector<Judgement>& judgements) {
  std::ofstream out(path);
  out << "name\thalf\ttruth\tfound\tright\tcounts\tconfidence\tresidual\texponent\tgain\toffset\tscore\tdifference\t"
         "trueDifference\tcauses\tmilliseconds\n";
  for (const Judgement& judgement : judgements) {
    const Cause& found = judgement.finding.main();
    out << judgement.pair.name << "\t" << (judgement.pair.half == Half::Fit ? "fit" : "report") << "\t"
        << nameOf(judgement.pair.recipe.truth) << "\t" << nameOf(found.kind) << "\t" << judgement.right << "\t"
        << judgement.counts << "\t" << found.confidence << "\t" << found.residual << "\t"
        << numberOr(found.exponent, "") << "\t" << numberOr(found.gain, "") << "\t" << numberOr(found.offset, "")
        << "\t" << judgement.finding.correspondence.score << "\t" << judgement.finding.difference << "\t"
        << judgement.difference << "\t" << judgement.finding.causes.size() << "\t" << judgement.milliseconds << "\n";
  }
}

}  // namespace diagnosis::test
