#include <algorithm>
#include <cstdio>
#include <map>

#include <gtest/gtest.h>

#include "tests/movie/save/SaveCases.h"
#include "tests/movie/save/SaveJudge.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using test::Judge;
using test::SaveCase;
using test::saveCases;
using Call = test::SimulatedFile::Call;

test::Recording recordingOf(const SaveCase& subject) {
  std::string why;
  const test::TemporaryFile file(subject.file);
  auto recording = test::recordSave(file.path(), subject.file, subject.edits, why);
  EXPECT_TRUE(recording) << subject.name << ": " << why;
  return recording ? std::move(*recording) : test::Recording{};
}

TEST(SaveWrites, AtMostTwiceTheMovieAtomAndALittle) {
  constexpr std::uint64_t little = 64 << 10;
  for (const std::size_t bulk : {std::size_t{1100}, std::size_t{3'000'000}}) {
    double most = 0;
    for (const SaveCase& subject : saveCases(11, bulk)) {
      std::uint64_t written = 0;
      for (const auto& change : recordingOf(subject).changes) {
        if (change.call == Call::Write) written += change.bytes.size();
      }
      EXPECT_GT(written, 0U) << subject.name;
      EXPECT_LE(written, 2 * subject.movie.size() + little) << subject.name;
      most = std::max(most, static_cast<double>(written) / static_cast<double>(subject.movie.size()));
    }
    std::printf("movie atoms of about %zu bytes: at most %.4f of their size written\n", bulk, most);
    EXPECT_LT(most, 2.2);
  }
}

/// The top-level atoms, found by a reader that shares no code with the save: offset and size under each type. What
/// follows the last whole one is under "".
std::multimap<std::string, std::pair<std::size_t, std::size_t>> atomsOf(const Bytes& file) {
  std::multimap<std::string, std::pair<std::size_t, std::size_t>> atoms;
  std::size_t at = 0;
  while (at + 8 <= file.size()) {
    std::uint64_t size = read32(file, at);
    if (size == 0 && read32(file, at + 4) == 0) break;
    if (size == 0) size = file.size() - at;
    if (size == 1) size = read64(file, at + 8);
    if (size < 8 || size > file.size() - at) break;
    const auto type = file.begin() + static_cast<std::ptrdiff_t>(at) + 4;
    atoms.emplace(std::string(type, type + 4), std::pair(at, static_cast<std::size_t>(size)));
    at += static_cast<std::size_t>(size);
  }
  if (at < file.size()) atoms.emplace("", std::pair(at, file.size() - at));
  return atoms;
}

/// Which bytes a save may change: the movie atoms, free space without media data, what is no whole atom, and the size
/// of media data that lacked one.
std::vector<bool> changeable(const SaveCase& subject) {
  std::vector<bool> may(subject.file.size());
  const auto allow = [&](std::size_t at, std::size_t size) {
    std::fill_n(may.begin() + static_cast<std::ptrdiff_t>(at), size, true);
  };
  for (const auto& [type, extent] : atomsOf(subject.file)) {
    const auto [at, size] = extent;
    const bool holdsChunk = subject.name == "chunks inside a free" && type == "free";
    if (type == "moov" || type.empty() || ((type == "free" || type == "skip") && !holdsChunk)) allow(at, size);
    if (type == "mdat" && read32(subject.file, at) == 0) allow(at, 4);
  }
  return may;
}

TEST(SaveWrites, NothingButTheMovieAtomAndFreeSpace) {
  for (const std::size_t padding : {std::size_t{0}, std::size_t{9}, std::size_t{200}, std::size_t{509}}) {
    for (const SaveCase& subject : saveCases(padding)) {
      SCOPED_TRACE(testing::Message() << subject.name << ", padding " << padding);
      const test::Recording recording = recordingOf(subject);
      EXPECT_EQ(Judge(subject).verdictAfter(recording.after, subject.edits[0].entry), "");
      const std::vector<bool> may = changeable(subject);
      for (std::size_t i = 0; i < std::min(may.size(), recording.after.size()); ++i) {
        ASSERT_TRUE(may[i] || recording.after[i] == subject.file[i]) << "byte " << i;
      }
      for (std::size_t i = recording.after.size(); i < may.size(); ++i)
        ASSERT_TRUE(may[i]) << "byte " << i << " is gone";
      const auto atoms = atomsOf(recording.after);
      EXPECT_EQ(atoms.count("moov"), 1U);
      EXPECT_EQ(atoms.count(""), 0U);
    }
  }
}

TEST(SaveWrites, AddingAndRemovingAPropertyGivesTheMovieAtomBackByteForByte) {
  for (const SaveCase& subject : saveCases(9)) {
    SCOPED_TRACE(subject.name);
    std::string why;
    const auto before = test::seenIn(subject.file, why).value();
    const test::Recording there = recordingOf(subject);
    const test::TemporaryFile file(there.after);
    const auto back = test::recordSave(file.path(), there.after, {{0, 0, before.descriptions[0]}}, why);
    ASSERT_TRUE(back) << why;
    const auto extent = atomsOf(back->after).find("moov")->second;
    const auto begin = back->after.begin() + static_cast<std::ptrdiff_t>(extent.first);
    EXPECT_EQ(Bytes(begin, begin + static_cast<std::ptrdiff_t>(extent.second)), subject.movie);
  }
}

}  // namespace
}  // namespace movie
