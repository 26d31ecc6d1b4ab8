#include <cctype>
#include <cerrno>
#include <memory>

#include <gtest/gtest.h>

#include "movie/atoms/MovieError.h"

namespace movie {
namespace {

constexpr int reasonCount = 0
#define REASON(name, text) +1
#include "movie/atoms/ReasonList.h"
    ;

std::string shouted(const char* english) {
  std::string text = english;
  for (char& each : text) each = static_cast<char>(std::toupper(static_cast<unsigned char>(each)));
  return text;
}

TEST(MovieError, IsToldAsASentence) {
  EXPECT_EQ((MovieError{"/a b.mov", "moov/trak", 44, Reason::TooManyTracks}.message()),
            "Cannot read \"/a b.mov\": the movie has too many tracks (atom moov/trak at offset 44).");
  EXPECT_EQ((MovieError{"/a.mov", "", 0, Reason::IsFolder}.message()), "Cannot read \"/a.mov\": it is a folder.");
  EXPECT_EQ((MovieError{"", "", 0, Reason::NoSuchFile}.message()), "Cannot read the movie: there is no such file.");
  EXPECT_EQ((MovieError{"/a.mov", "moov", 8, Reason::Fragmented}.message(Attempt::Save)),
            "Cannot save \"/a.mov\": the movie is fragmented (atom moov at offset 8).");
  EXPECT_EQ((MovieError{"", "", 0, Reason::Fragmented}.message(Attempt::Save)),
            "Cannot save the movie: the movie is fragmented.");
  EXPECT_EQ((MovieError{"", "", 0, verbatim("std::bad_alloc")}.message()), "Cannot read the movie: std::bad_alloc.");
}

TEST(MovieError, HasClausesInThePlacesOfClauses) {
  const Clause why(Reason::SampleUnreadable, {verbatim("7"), {Reason::SystemSays, {verbatim("no: really")}}});
  EXPECT_EQ(why.text(), "the sample 7 cannot be read: the system says \"no: really\"");
  EXPECT_EQ(why.text(shouted), "THE SAMPLE 7 CANNOT BE READ: THE SYSTEM SAYS \"no: really\"");
  EXPECT_EQ(
      (MovieError{"/a.mov", "moov", 8, why}.message(Attempt::Read, shouted)),
      "CANNOT READ \"/a.mov\": THE SAMPLE 7 CANNOT BE READ: THE SYSTEM SAYS \"no: really\" (ATOM moov AT OFFSET 8).");
}

TEST(MovieError, NamesTheAtomToBlameInItsClause) {
  EXPECT_EQ((MovieError{"/a.mov", "moov/trak", 48, Reason::MovieMalformed}.clause().text()),
            "the movie atom is malformed (atom moov/trak at offset 48)");
  EXPECT_EQ((MovieError{"/a.mov", {}, 0, Reason::EmptyFile}.clause().text()), "the file is empty");
}

TEST(MovieError, LeavesThePlacesInNamesAlone) {
  const Clause why(Reason::SystemSays, {verbatim("100 %2 %1 %")});
  EXPECT_EQ((MovieError{"/%2%1.mov", {}, 0, why}.message()),
            "Cannot read \"/%2%1.mov\": the system says \"100 %2 %1 %\".");
}

TEST(MovieError, FillsEveryPlaceOfEveryReason) {
  for (int i = 1; i < reasonCount; ++i) {
    const auto reason = static_cast<Reason>(i);
    EXPECT_FALSE(Clause(reason).text().empty());
    EXPECT_EQ(Clause(reason, {verbatim("a"), verbatim("b"), verbatim("c")}).text().find('%'), std::string::npos)
        << Clause(reason).text();
  }
}

TEST(MovieError, TellsWhatTheSystemAnsweredByWhatWasAttempted) {
  struct Row {
    int number;
    const char *reading, *writing, *creating;
  };
  const char* const full = "the system says \"No space left on device\"";
  const char* const readOnly = "the file system is read-only";
  const Row rows[] = {
      {ENOENT, "there is no such file", "there is no such file", "there is no such folder"},
      {ENOTDIR, "there is no such file", "there is no such file", "there is no such folder"},
      {EACCES, "there is no permission to read the file", "there is no permission to write the file",
       "there is no permission to write there"},
      {EPERM, "there is no permission to read the file", "there is no permission to write the file",
       "there is no permission to write there"},
      {EROFS, "the system says \"Read-only file system\"", readOnly, readOnly},
      {ENOSPC, full, "the disk is full", "there is not enough space on the disk"},
      {EDQUOT, "the system says \"Disk quota exceeded\"", "the disk quota is used up",
       "there is not enough space on the disk"},
      {EFBIG, "the system says \"File too large\"", "the file would become larger than is allowed",
       "the file would be larger than the system allows"},
      {EISDIR, "it is a folder", "it is a folder", "it is a folder"},
      {ENXIO, "it is not a regular file", "it is not a regular file", "it is not a regular file"},
      {EEXIST, "the system says \"File exists\"", "the system says \"File exists\"",
       "another file has taken that name meanwhile"},
      {ECANCELED, "it was cancelled", "it was cancelled", "it was cancelled"},
      {ETXTBSY, "the system says \"Text file busy\"", "another program has the file open for writing",
       "the system says \"Text file busy\""},
      {EAGAIN, "the system says \"Resource temporarily unavailable\"", "another program has the file open for writing",
       "the system says \"Resource temporarily unavailable\""},
      {ELOOP, "the system says \"Too many levels of symbolic links\"",
       "the system says \"Too many levels of symbolic links\"", "too many symbolic links follow each other"},
      {EIO, "the system says \"Input/output error\"", "the system says \"Input/output error\"",
       "the system says \"Input/output error\""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(systemReason(row.number, Access::Read).text(), row.reading);
    EXPECT_EQ(systemReason(row.number, Access::Write).text(), row.writing);
    EXPECT_EQ(systemReason(row.number, Access::Create).text(), row.creating);
  }
}

TEST(MovieError, TellsOfTheSystemWhatItIsToWhoReadsWritesOrMakesAFile) {
  const auto reasonOf = [](int code, sys::Step what, Access access) {
    const MovieError error = fromSystem(sys::Error{code, what, "a.mov"}, access);
    EXPECT_EQ(error.file, "a.mov");
    return error.reason();
  };
  using sys::Step;
  EXPECT_EQ(reasonOf(ENOSPC, Step::Write, Access::Write), "the disk is full (writing the file)");
  EXPECT_EQ(reasonOf(ENOSPC, Step::Write, Access::Create), "there is not enough space on the disk");
  EXPECT_EQ(reasonOf(EACCES, Step::OpenToWrite, Access::Write), "there is no permission to write the file");
  EXPECT_EQ(reasonOf(EACCES, Step::Read, Access::Create), "there is no permission to read the file");
  EXPECT_EQ(reasonOf(EROFS, Step::SyncName, Access::Create),
            "the file is complete, but whether its name would outlast a power failure is uncertain: the file system is "
            "read-only");
}

Result<std::unique_ptr<int>> number(int value, int& calls) {
  ++calls;
  if (value < 0) return failed("/a.mov", Reason::NotMovie, "moov", 4);
  return std::make_unique<int>(value);
}

Result<void> status(int value, int& calls) {
  TRY(number(value, calls));
  return {};
}

Result<std::string> sum(int first, int second, int& calls) {
  TRY(const auto one, number(first, calls));
  TRY(auto other, number(second, calls));
  TRY(status(*one, calls));
  return std::to_string(*one + *other);
}

TEST(Try, GoesOnWithTheValue) {
  int calls = 0;
  EXPECT_EQ(sum(1, 2, calls).value_or("error"), "3");
  EXPECT_EQ(calls, 3);
}

TEST(Try, ReturnsTheErrorAsItIsAndDoesNoMore) {
  int calls = 0;
  const auto failure = sum(-1, 2, calls);
  EXPECT_EQ(calls, 1);
  ASSERT_FALSE(failure);
  EXPECT_TRUE(failure.error().is(Reason::NotMovie));
  EXPECT_EQ(failure.error().message(), "Cannot read \"/a.mov\": it is not a movie (atom moov at offset 4).");
  EXPECT_FALSE(sum(1, -2, calls));
  EXPECT_EQ(calls, 3);
  EXPECT_FALSE(status(-1, calls));
}

TEST(Try, LeavesAnErrorThatIsStillNeeded) {
  const Result<int> kept = failed("/a.mov", Reason::NotMovie);
  const auto pass = [](const Result<int>& result) -> Result<void> {
    TRY(result);
    return {};
  };
  EXPECT_FALSE(pass(kept));
  EXPECT_EQ(kept.error().file, "/a.mov");
}

}  // namespace
}  // namespace movie
