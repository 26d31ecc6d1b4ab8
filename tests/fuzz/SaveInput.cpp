#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <random>

#include "movie/save/MetadataSave.h"
#include "tests/fuzz/ColorChoice.h"
#include "tests/fuzz/FuzzInputs.h"
#include "tests/fuzz/MemoryFile.h"
#include "tests/fuzz/SavedStateJudge.h"
#include "tests/movie/save/CrashStates.h"
#include "tests/support/SimulatedFile.h"

namespace fuzz {

namespace {

using movie::ImageDescription;
using movie::MovieFile;
using movie::SampleDescriptionEdit;
using movie::SaveOutcome;
using movie::SavePlace;
using movie::test::SimulatedFile;
using Metadata = SavedStateJudge::Metadata;
using Edits = std::vector<SampleDescriptionEdit>;

constexpr std::size_t edit0 = 0, editedTrack = 4, stateSeed = 5, firstFault = 8;

/// Which calls fail, and how: pairs of a call's number and a kind.
class FaultPlan {
 public:
  explicit FaultPlan(ByteView pairs) : pairs_(pairs.begin(), pairs.end()) {}

  SimulatedFile::Fault operator()(std::size_t call) const {
    for (std::size_t i = 0; i + 1 < pairs_.size(); i += 2) {
      const unsigned kind = pairs_[i + 1];
      const std::size_t from = pairs_[i] % 64U;
      const bool forGood = kind >= 0xE0;
      if (kind == 0 || (forGood ? call < from : call != from)) continue;
      constexpr std::array errors{EIO, ENOSPC, EFBIG, EINTR, EDQUOT, EOPNOTSUPP, EAGAIN};
      if (forGood) return {kind % 2 == 0 ? EIO : ENOSPC, false};
      if (kind % 8 == 7) return {0, true};
      return {errors[kind % 8], false};
    }
    return {};
  }

 private:
  Bytes pairs_;
};

/// The first description of a video track with two colour operations made; none when there is no such.
std::optional<Edits> editsFor(const MovieFile& movie, ByteView choices) {
  std::vector<std::size_t> tracks;
  for (std::size_t i = 0; i < movie.tracks().size(); ++i) {
    const auto& info = movie.tracks()[i];
    if (info.mediaType == movie::videoMedia && !info.sampleDescriptions.empty()) tracks.push_back(i);
  }
  if (tracks.empty()) return std::nullopt;
  const std::size_t track = tracks[choices[editedTrack] % tracks.size()];
  ImageDescription description(movie.tracks()[track].sampleDescriptions[0]);
  ColorChoice(choices[edit0], choices[edit0 + 1]).apply(description);
  ColorChoice(choices[edit0 + 2], choices[edit0 + 3]).apply(description);
  return Edits{{track, 0, description.bytes()}};
}

/// Another edit than any that an input chooses, for the save after a save.
std::optional<Edits> laterEdits(const MovieFile& movie, std::size_t track) {
  ImageDescription description(movie.tracks()[track].sampleDescriptions[0]);
  if (description.setNclc({0, 0x1234, 16, 9}, movie::ColorAtomFlavour::Nclc) != movie::noErr) return std::nullopt;
  return Edits{{track, 0, description.bytes()}};
}

struct Attempt {
  movie::Result<SaveOutcome> outcome;
  std::vector<SimulatedFile::Change> changes;
  Bytes after;
  std::size_t descriptorsLeft = 0;
};

Attempt attempt(const MovieFile& movie, const Bytes& content, const Edits& edits, const FaultPlan& plan) {
  SimulatedFile file(content, movie.stamp());
  file.cutWritesAtSectors(movie::sectorSize);
  file.failWith([&](SimulatedFile::Call, std::size_t call) { return plan(call); });
  auto outcome = movie::saveMetadata(movie, edits, file);
  return {std::move(outcome), file.changes(), file.content(), file.openDescriptors()};
}

/// One movie file and one edit of it.
class SaveTrial {
 public:
  SaveTrial(const Bytes& content, const MovieFile& movie, Edits edits)
      : content_(content), movie_(movie), edits_(std::move(edits)), judge_(content, movie) {}

  std::string run(const FaultPlan& plan, std::uint8_t seed) {
    const Attempt whole = attempt(movie_, content_, edits_, FaultPlan({}));
    if (whole.descriptorsLeft != 0) return "the file stays open";
    if (!whole.outcome) return whole.after == content_ ? "" : "a refused save changed the file";
    if (whole.outcome->uncertain) return "a save without a failure is uncertain";
    if (whole.outcome->place == SavePlace::Unchanged) return whole.changes.empty() ? "" : "nothing to save was saved";
    if (!judge_.learn(whole.after)) return "the saved file has no movie atom";
    if (auto wrong = judgeNew(whole.after); !wrong.empty()) return "saved: " + wrong;
    const auto later = laterEdits(movie_, edits_[0].track);
    again_ = later && movie::canUpdate(movie_, *later, fileOf(content_, movie_)).has_value();
    if (auto wrong = judgeStops(whole, seed); !wrong.empty()) return wrong;

    const Attempt faulty = attempt(movie_, content_, edits_, plan);
    if (faulty.descriptorsLeft != 0) return "after a failure the file stays open";
    if (auto wrong = judgeEnd(faulty); !wrong.empty()) return "with failures: " + wrong;
    if (auto wrong = judgeStops(faulty, seed); !wrong.empty()) return "with failures, " + wrong;
    return savedAgain(faulty.after);
  }

 private:
  SimulatedFile& fileOf(const Bytes& content, const MovieFile& movie) {
    scratch_ = std::make_unique<SimulatedFile>(content, movie.stamp());
    return *scratch_;
  }

  /// The new metadata are there and nothing else of the movie atom differs.
  std::string judgeNew(const Bytes& after) {
    if (auto wrong = judge_.verdict(after, Metadata::New); !wrong.empty()) return wrong;
    static MemoryFile file;
    const auto opened = MovieFile::open(file.holding(after));
    if (!opened) return opened.error().message();
    const std::size_t track = edits_[0].track;
    if ((*opened)->tracks().size() != movie_.tracks().size()) return "it has other tracks";
    if ((*opened)->tracks()[track].sampleDescriptions[0] != edits_[0].entry) return "the edit is not there";
    const auto undone =
        movie::editedMovieAtom((*opened)->movieAtom(), {{track, 0, movie_.tracks()[track].sampleDescriptions[0]}});
    if (!undone || !movie::equalButForColors(*undone, movie_.movieAtom())) return "the movie atom is another";
    return {};
  }

  std::string judgeEnd(const Attempt& faulty) const {
    if (!faulty.outcome) return judge_.verdict(faulty.after, Metadata::Old);
    return judge_.verdict(faulty.after, faulty.outcome->uncertain ? Metadata::Either : Metadata::New);
  }

  /// Every state that a stop leaves; one of them, as the seed chooses, is saved again.
  std::string judgeStops(const Attempt& of, std::uint8_t seed) {
    std::mt19937 random(seed);
    std::size_t number = 0;
    const std::size_t chosen = seed % 32U;
    Bytes candidate;
    std::string wrong;
    movie::test::visitCrashStates(content_, of.changes, 1, random, [&](const Bytes& state) {
      if (number++ == chosen) candidate = state;
      if (wrong.empty()) wrong = judge_.verdict(state, Metadata::Either);
    });
    if (!wrong.empty()) return "stopped: " + wrong;
    return candidate.empty() ? "" : savedAgain(candidate);
  }

  std::string savedAgain(const Bytes& state) {
    if (!again_) return {};
    static MemoryFile file;
    const auto movie = MovieFile::open(file.holding(state));
    if (!movie) return "it does not open any more: " + movie.error().message();
    const auto edits = laterEdits(**movie, edits_[0].track);
    if (!edits) return "it cannot be edited any more";
    const Attempt second = attempt(**movie, state, *edits, FaultPlan({}));
    if (!second.outcome) return "it cannot be saved any more: " + second.outcome.error().message();
    const auto saved = MovieFile::open(file.holding(second.after));
    if (!saved) return "saved again, it does not open: " + saved.error().message();
    if ((*saved)->tracks()[edits_[0].track].sampleDescriptions[0] != edits->at(0).entry)
      return "the second edit is lost";
    if (auto wrong = judge_.verdictOnMedia(second.after); !wrong.empty()) return "saved again: " + wrong;
    return {};
  }

  const Bytes& content_;
  const MovieFile& movie_;
  Edits edits_;
  SavedStateJudge judge_;
  bool again_ = false;  ///< another save of the file as it was is not refused
  std::unique_ptr<SimulatedFile> scratch_;
};

}  // namespace

std::string trySave(ByteView input) {
  if (input.size() <= saveChoices) return {};
  const ByteView choices = input.first(saveChoices);
  const Bytes content(input.begin() + saveChoices, input.end());
  static MemoryFile file;
  const auto movie = MovieFile::open(file.holding(content));
  if (!movie) return {};
  auto edits = editsFor(**movie, choices);
  if (!edits) return {};
  return SaveTrial(content, **movie, std::move(*edits)).run(FaultPlan(choices.subspan(firstFault)), choices[stateSeed]);
}

}  // namespace fuzz
