#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "movie/save/MetadataSave.h"
#include "tests/movie/save/CrashStates.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/support/SimulatedFile.h"

namespace movie::test {

using Changes = std::vector<SimulatedFile::Change>;

struct Tally {
  std::uint64_t states = 0, violations = 0, saved = 0;
  std::string first;  ///< the first violation

  void violate(const std::string& what) {
    if (violations++ == 0) first = what;
  }
};

/// Judges the states of one save against the file before it.
class Judge {
 public:
  explicit Judge(const SaveCase& subject) : subject_(subject) {
    std::string why;
    before_ = seenIn(subject.file, why).value();
  }

  /// Empty for a movie with the old or the new metadata whose chunks are as they were.
  std::string verdict(const Bytes& file) const {
    std::string why;
    const auto seen = seenIn(file, why);
    if (!seen) return why;
    const bool old = seen->descriptions == before_.descriptions;
    if (!old && seen->descriptions != std::vector<Bytes>{subject_.edits[0].entry}) {
      return "the metadata are neither the old nor the new";
    }
    return verdictOnTheRest(*seen, file);
  }

  /// The same for a movie that is to have the given metadata.
  std::string verdictAfter(const Bytes& file, const Bytes& entry) const {
    std::string why;
    const auto seen = seenIn(file, why);
    if (!seen) return why;
    if (seen->descriptions != std::vector<Bytes>{entry}) return "the metadata are not the ones saved";
    return verdictOnTheRest(*seen, file);
  }

 private:
  std::string verdictOnTheRest(const SeenMovie& seen, const Bytes& file) const {
    if (seen.rest != before_.rest) return "the movie atom is another";
    if (seen.chunks != before_.chunks) return "the chunks are elsewhere";
    for (const auto& [offset, size] : seen.chunks) {
      const auto at = static_cast<std::ptrdiff_t>(offset);
      if (!std::equal(file.begin() + at, file.begin() + at + static_cast<std::ptrdiff_t>(size),
                      subject_.file.begin() + at)) {
        return "media data have changed";
      }
    }
    return {};
  }

  const SaveCase& subject_;
  SeenMovie before_;
};

/// The changes that the save makes, and the file after it.
struct Recording {
  Changes changes;
  Bytes after;
  SaveOutcome outcome;
};

/// Opens the movie at `path` and saves into a simulated file of that content; none, and why, when it is not saved.
std::optional<Recording> recordSave(const std::string& path, const Bytes& content,
                                    const std::vector<SampleDescriptionEdit>& edits, std::string& why);

enum class Again { No, Yes };

/// Judges every state that a stop during the changes may leave, and where asked saves each different one again.
void tallyStates(const SaveCase& subject, const Changes& changes, std::size_t perPoint, std::mt19937& random,
                 Again again, Tally& tally);

/// The changes that a save of the case makes; a failed expectation where it is not saved.
Changes changesOf(const SaveCase& subject);

}  // namespace movie::test
