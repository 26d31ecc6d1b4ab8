#include <filesystem>

#include "scan/resume/ResumeFile.h"
#include "tests/scan/resume/KeptScans.h"
#include "tests/support/FaultyCalls.h"
#include "tests/support/TemporaryFolder.h"

namespace scan::test {
namespace {

using What = ResumeProblem::What;
using std::chrono::hours;
using std::chrono::seconds;
using sys::test::FaultyCalls;

class KeptInAFile : public testing::Test {
 protected:
  std::string path() const { return folder_.path("scan.lumascan"); }
  tl::expected<ResumeFile, ResumeProblem> opened(const ResumeSubject& subject = keptSubject()) const {
    return ResumeFile::at(path(), subject, seconds(0));
  }
  /// What a scan tells until so many frames are final, in two parts.
  static void tell(ResumeFile& file, int frames) {
    const Beginning beginning = keptBeginning();
    file.begun(beginning);
    for (const int end : {frames / 2, frames}) settle(file, end);
  }
  static void settle(ResumeFile& file, int end) {
    const Matches matches{0, keptFrames(0, end), 2};
    file.settled(matches, keptBeginning().lines, keptStanding(static_cast<std::size_t>(end)));
  }
  What refusal(const ResumeSubject& subject = keptSubject()) const {
    const auto file = opened(subject);
    EXPECT_FALSE(file);
    return file ? What::Unusable : file.error().what;
  }

  movie::test::TemporaryFolder folder_;
};

TEST_F(KeptInAFile, IsThereAgain) {
  {
    auto file = opened();
    ASSERT_TRUE(file);
    EXPECT_EQ(file->saved(), nullptr);
    tell(*file, 40);
    EXPECT_TRUE(file->finish());
  }
  auto file = opened();
  ASSERT_TRUE(file);
  ASSERT_NE(file->saved(), nullptr);
  expectFrames(file->saved()->frames, keptFrames(0, 40));
}

TEST_F(KeptInAFile, GoesOnBehindWhatWasKept) {
  {
    auto file = opened();
    tell(*file, 40);
  }
  {
    auto file = opened();
    settle(*file, 60);
    EXPECT_TRUE(file->finish());
  }
  expectFrames(opened()->saved()->frames, keptFrames(0, 60));
}

TEST_F(KeptInAFile, IsWrittenEveryNowAndThenAndAtTheEnd) {
  auto file = ResumeFile::at(path(), keptSubject(), hours(1));
  tell(*file, 40);
  const auto before = std::filesystem::file_size(path());
  EXPECT_TRUE(file->finish());
  EXPECT_GT(std::filesystem::file_size(path()), before);
  *file = *ResumeFile::at(folder_.path("other"), keptSubject());
  expectFrames(opened()->saved()->frames, keptFrames(0, 40));
}

TEST_F(KeptInAFile, GoesOnFromAnyPlaceWhereWritingEnded) {
  {
    auto file = opened();
    tell(*file, 8);
  }
  const movie::Bytes whole = movie::test::contentOf(path());
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    folder_.add("scan.lumascan", {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
    {
      auto file = opened();
      ASSERT_TRUE(file);
      const std::size_t known = file->saved() == nullptr ? 0 : file->saved()->frames.size();
      EXPECT_TRUE(known == 0 || known == 4 || known == 8);
      if (file->saved() == nullptr) file->begun(keptBeginning());
      settle(*file, 8);
      EXPECT_TRUE(file->finish());
    }
    expectFrames(opened()->saved()->frames, keptFrames(0, 8));
  }
}

TEST_F(KeptInAFile, IsLeftAloneWhereItHoldsSomethingElse) {
  const movie::Bytes movie{0, 0, 0, 20, 'f', 't', 'y', 'p', 'q', 't', ' ', ' '};
  folder_.add("scan.lumascan", movie);
  EXPECT_EQ(refusal(), What::Foreign);
  EXPECT_EQ(movie::test::contentOf(path()), movie);
}

TEST_F(KeptInAFile, IsLeftAloneWhereItOnlyBeginsAsOne) {
  { ASSERT_TRUE(opened()); }
  const movie::Bytes head = movie::test::contentOf(path());
  movie::Bytes text(resumeMark.begin(), resumeMark.end()), damaged = head;
  for (const char each : std::string(" is the name of a film project.\n"))
    text.push_back(static_cast<std::uint8_t>(each));
  damaged[30] ^= 1;
  for (const movie::Bytes& content : {text, damaged, movie::Bytes{'L', 'x'}}) {
    folder_.add("scan.lumascan", content);
    EXPECT_EQ(refusal(), What::Foreign);
    EXPECT_EQ(movie::test::contentOf(path()), content);
  }
}

TEST_F(KeptInAFile, IsLeftAloneWhereItIsOfAnotherScan) {
  {
    auto file = opened();
    tell(*file, 40);
  }
  const movie::Bytes before = movie::test::contentOf(path());
  for (const auto& change : std::vector<std::function<void(ResumeSubject&)>>{
           [](auto& subject) { ++subject.source.bytes; }, [](auto& subject) { ++subject.source.modified; },
           [](auto& subject) { ++subject.dest.modified; }, [](auto& subject) { ++subject.dest.frames; },
           [](auto& subject) { --subject.end; }, [](auto& subject) { ++subject.first; },
           [](auto& subject) { subject.every = 1; }, [](auto& subject) { subject.align = false; }}) {
    ResumeSubject subject = keptSubject();
    change(subject);
    EXPECT_EQ(refusal(subject), What::OtherScan);
  }
  EXPECT_EQ(movie::test::contentOf(path()), before);
}

TEST_F(KeptInAFile, IsLeftAloneWhereAnotherVersionKeptIt) {
  { ASSERT_TRUE(opened()); }
  movie::Bytes bytes = movie::test::contentOf(path());
  const movie::Bytes group = subjectGroup(keptSubject());
  ASSERT_EQ(bytes.size(), resumeMark.size() + group.size());
  movie::Bytes held(group.begin() + 12, group.end());
  ++held[1];
  bytes.resize(resumeMark.size());
  movie::append(bytes, resumeGroupOf(held));
  folder_.add("scan.lumascan", bytes);
  EXPECT_EQ(refusal(), What::OtherVersion);
  EXPECT_EQ(movie::test::contentOf(path()), bytes);
}

TEST_F(KeptInAFile, HasOneWriter) {
  auto first = opened();
  ASSERT_TRUE(first);
  tell(*first, 4);
  EXPECT_EQ(refusal(), What::InUse);
  *first = *ResumeFile::at(folder_.path("other"), keptSubject());
  EXPECT_TRUE(opened());
}

TEST_F(KeptInAFile, IsAFile) {
  std::filesystem::create_directory(path());
  EXPECT_EQ(refusal(), What::NoFile);
  EXPECT_EQ(ResumeFile::at("/dev/null", keptSubject()).error().what, What::NoFile);
  const auto nowhere = ResumeFile::at(folder_.path("nowhere/scan"), keptSubject());
  EXPECT_EQ(nowhere.error().what, What::Unusable);
  EXPECT_EQ(nowhere.error().code, ENOENT);
}

/// A full disk: the scan is told at the end, and what was kept until then is there.
TEST_F(KeptInAFile, KeepsWhatHadRoom) {
  for (const auto call : {FaultyCalls::Call::Write, FaultyCalls::Call::Sync}) {
    std::filesystem::remove(path());
    bool isFull = false;
    FaultyCalls calls([&](FaultyCalls::Call made, std::size_t) {
      return isFull && made == call ? FaultyCalls::Fault{ENOSPC, false} : FaultyCalls::Fault{};
    });
    {
      auto file = ResumeFile::at(path(), keptSubject(), seconds(0), calls);
      ASSERT_TRUE(file);
      tell(*file, 20);
      isFull = true;
      settle(*file, 40);
      isFull = false;
      settle(*file, 60);
      const auto finished = file->finish();
      ASSERT_FALSE(finished);
      EXPECT_EQ(finished.error().code, ENOSPC);
    }
    expectFrames(opened()->saved()->frames, keptFrames(0, call == FaultyCalls::Call::Write ? 20 : 40));
  }
}

TEST_F(KeptInAFile, IsRefusedAtOnceWhereNothingCanBeWritten) {
  for (const auto call : {FaultyCalls::Call::Open, FaultyCalls::Call::Status, FaultyCalls::Call::Lock,
                          FaultyCalls::Call::Write, FaultyCalls::Call::Sync}) {
    std::filesystem::remove(path());
    FaultyCalls calls([&](FaultyCalls::Call made, std::size_t) {
      return made == call ? FaultyCalls::Fault{EIO, false} : FaultyCalls::Fault{};
    });
    const auto file = ResumeFile::at(path(), keptSubject(), seconds(0), calls);
    ASSERT_FALSE(file);
    EXPECT_EQ(file.error().what, What::Unusable);
    EXPECT_EQ(file.error().code, EIO);
  }
}

}  // namespace
}  // namespace scan::test
