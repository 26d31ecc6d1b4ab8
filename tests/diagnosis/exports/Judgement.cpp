#include "tests/diagnosis/exports/Judgement.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <thread>

#include "diagnosis/Diagnosis.h"
#include "diagnosis/MovieFrames.h"
#include "tests/diagnosis/exports/TrueDifference.h"

namespace diagnosis::test {
namespace {

std::unique_ptr<movie::Movie> opened(const std::string& path) {
  auto movie = movie::Movie::movieWithFile(path);
  if (!movie) throw std::runtime_error(path + ": " + movie.error().message());
  return std::move(*movie);
}

bool isRight(const Truth& truth, CauseKind found) {
  // Samples that are found identical are: an encoding may lose nothing.
  if (truth.causes.front() == CauseKind::Same && found == CauseKind::Identical) return true;
  // That frames of one colour differ is as true as that they tell nothing.
  if (truth.causes.front() == CauseKind::Unreadable && found == CauseKind::Different) return true;
  return std::find(truth.causes.begin(), truth.causes.end(), found) != truth.causes.end();
}

bool isChangeOfPicture(const Truth& truth) {
  switch (truth.causes.front()) {
    case CauseKind::Different:
    case CauseKind::Dark:
    case CauseKind::Unreadable:
      return false;
    default:
      return !isUnchanged(truth);
  }
}

std::uint16_t indexOf(Matrix matrix) {
  switch (matrix) {
    case Matrix::Bt709:
      return 1;
    case Matrix::Bt601:
      return 6;
    case Matrix::Bt2020:
      break;
  }
  return 9;
}

/// Whether a side is read as its recipe means it to be.
std::string troubleWith(const std::string& side, const SideTags& tags, const Colors& colors) {
  const std::uint16_t read = tags.matrixInForce == 5 ? 6 : tags.matrixInForce;
  if (read != (colors.rgb ? 0 : indexOf(colors.matrix))) {
    return "the " + side + "'s matrix is read as " + std::to_string(read);
  }
  if ((tags.range == SampleRange::Full) != colors.full) return "the " + side + "'s range is read as the other one";
  return "";
}

}  // namespace

bool isUnchanged(const Truth& truth) {
  return truth.causes.front() == CauseKind::Same || truth.causes.front() == CauseKind::Identical;
}

std::string nameOf(CauseKind kind) {
  static const char* const names[] = {"identical", "same",   "power",     "range", "gain",
                                      "tone",      "matrix", "different", "dark",  "unreadable"};
  return names[static_cast<std::size_t>(kind)];
}

std::string nameOf(const Truth& truth) {
  std::string name;
  for (const CauseKind cause : truth.causes) name += (name.empty() ? "" : "+") + nameOf(cause);
  return name;
}

Judgement judged(const ExportPair& pair) {
  const auto source = opened(pair.source), dest = opened(pair.dest);
  const auto pictures = picturesAt(*source, *dest, {FrameTimes{}});
  if (!pictures) throw std::runtime_error(pair.name + ": " + pictures.error().message());
  const Question question = questionOf(*source, *dest, *pictures);

  const auto begin = std::chrono::steady_clock::now();
  Judgement judgement{.pair = pair, .finding = diagnose(question)};
  judgement.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
  const Recipe& recipe = pair.recipe;
  judgement.difference = trueDifference(question, recipe.placement, recipe.covered);
  judgement.right = isRight(recipe.truth, judgement.finding.main().kind);
  judgement.counts = !(isChangeOfPicture(recipe.truth) && judgement.difference < leastDifference) &&
                     !(isUnchanged(recipe.truth) && judgement.difference > mostDifference);
  judgement.trouble = troubleWith("source", question.source, recipe.master.colors);
  if (judgement.trouble.empty()) {
    judgement.trouble = troubleWith("destination", question.dest, recipe.tags.value_or(recipe.master.colors));
  }
  return judgement;
}

std::vector<Judgement> judgedAll(const std::vector<Batch>& batches, std::vector<std::string>& troubles) {
  std::vector<std::vector<Judgement>> found(batches.size());
  std::vector<std::string> failed(batches.size());
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t i = next++; i < batches.size(); i = next++) {
      try {
        for (const ExportPair& pair : made(batches[i])) found[i].push_back(judged(pair));
      } catch (const std::exception& error) {
        failed[i] = error.what();
      }
    }
  };
  std::thread other(work);
  work();
  other.join();

  std::vector<Judgement> all;
  for (std::vector<Judgement>& part : found) std::move(part.begin(), part.end(), std::back_inserter(all));
  std::copy_if(failed.begin(), failed.end(), std::back_inserter(troubles),
               [](const std::string& each) { return !each.empty(); });
  return all;
}

}  // namespace diagnosis::test
