#include "tests/movie/save/SaveJudge.h"

#include <set>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/AtomBuilder.h"

namespace movie::test {

std::optional<Recording> recordSave(const std::string& path, const Bytes& content,
                                    const std::vector<SampleDescriptionEdit>& edits, std::string& why) {
  const auto movie = MovieFile::open(path);
  if (!movie) {
    why = movie.error().message();
    return std::nullopt;
  }
  SimulatedFile file(content, (*movie)->stamp());
  auto outcome = saveMetadata(**movie, edits, file);
  if (!outcome) {
    why = outcome.error().message();
    return std::nullopt;
  }
  return Recording{file.changes(), file.content(), std::move(*outcome)};
}

namespace {

/// One file on disk that takes one content after the other.
class Slate {
 public:
  Slate() : file_(Bytes(1)), descriptor_(::open(file_.path().c_str(), O_RDWR | O_CLOEXEC)) {}
  ~Slate() { ::close(descriptor_); }
  Slate(const Slate&) = delete;
  Slate& operator=(const Slate&) = delete;

  const std::string& show(const Bytes& content) const {
    EXPECT_EQ(::pwrite(descriptor_, content.data(), content.size(), 0), static_cast<ssize_t>(content.size()));
    EXPECT_EQ(::ftruncate(descriptor_, static_cast<off_t>(content.size())), 0);
    return file_.path();
  }

 private:
  TemporaryFile file_;
  int descriptor_;
};

void expectSavedAgain(const Judge& judge, const SaveCase& subject, const Slate& slate, const Bytes& state,
                      Tally& tally) {
  // Other metadata than those of the interrupted save, so that there always is something to save.
  ImageEntry entry;
  entry.extensions = {nclcExtension(9, 16, 9)};
  std::string why;
  const auto again = recordSave(slate.show(state), state, {{0, 0, entry.build()}}, why);
  if (!again) return tally.violate(subject.name + ", saved again: " + why);
  const std::string verdict = judge.verdictAfter(again->after, entry.build());
  if (!verdict.empty()) return tally.violate(subject.name + ", saved again: " + verdict);
  ++tally.saved;
}

}  // namespace

void tallyStates(const SaveCase& subject, const Changes& changes, std::size_t perPoint, std::mt19937& random,
                 Again again, Tally& tally) {
  const Judge judge(subject);
  const Slate slate;
  std::set<Bytes> seen;
  visitCrashStates(subject.file, changes, perPoint, random, [&](const Bytes& state) {
    ++tally.states;
    if (!seen.insert(state).second) return;
    const std::string verdict = judge.verdict(state);
    if (!verdict.empty()) return tally.violate(subject.name + ": " + verdict);
    if (again == Again::Yes) expectSavedAgain(judge, subject, slate, state, tally);
  });
}

Changes changesOf(const SaveCase& subject) {
  std::string why;
  const TemporaryFile file(subject.file);
  const auto recording = recordSave(file.path(), subject.file, subject.edits, why);
  EXPECT_TRUE(recording) << subject.name << ": " << why;
  return recording ? recording->changes : Changes{};
}

}  // namespace movie::test
