#include <atomic>
#include <future>
#include <memory>

#include <gmock/gmock.h>
#include <unistd.h>

#include "SharedFiles/files/FileDigest.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/files/FileCopies.h"

namespace {

using ::testing::ElementsAre;

using FileDigests = FileCopies;

/// Whether, in the end, nobody holds what a delegate holds but so many here: then it is called no more.
bool isLetGo(const std::shared_ptr<std::atomic<int>>& held, long holders = 1) {
  return runEventLoopUntil([&] { return held.use_count() == holders; });
}

TEST_F(FileDigests, HashAFile) {
  EXPECT_EQ(digestOfFile(put("file", ""), DigestAlgorithm::md5), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(digestOfFile(put("file", QByteArray(200000, 'a')), DigestAlgorithm::sha1),
            "ec99adda39f462070e2c7ecbc8433e70dc9fb54c");
}

TEST_F(FileDigests, TellOfAFileThatCannotBeHashed) {
  EXPECT_TRUE(digestOfFile(path("none"), DigestAlgorithm::md5).isNull());
  EXPECT_TRUE(digestOfFile(log_.home(), DigestAlgorithm::md5).isNull());
  EXPECT_THAT(log_.entries(),
              ElementsAre("Error: Unable to open destination file " + path("none") + ". Aborting hash verification...",
                          "Error reading file " + log_.home() + " - aborting..."));
}

TEST_F(FileDigests, StopHashingWhenTheDelegateRefuses) {
  const QString source = put("source", "");
  ASSERT_EQ(::truncate(QFile::encodeName(source).constData(), qsizetype{64} << 30), 0);
  const auto asked = std::make_shared<std::atomic<int>>(0);
  EXPECT_TRUE(digestOfFile(source, DigestAlgorithm::sha256, [asked] { return ++*asked < 3; }).isNull());
  ASSERT_TRUE(isLetGo(asked));
  EXPECT_EQ(*asked, 3) << "who has refused is asked no more";
}

TEST_F(FileDigests, AskAfterEachBlockWhetherHashingShouldGoOn) {
  constexpr int blocks = 60;
  const QString source = put("source", noise((blocks - 1) * 65536 + 1));
  const auto asked = std::make_shared<std::atomic<int>>(0);
  std::promise<void> returned;
  const std::shared_future<void> end = returned.get_future();
  const auto slowly = [asked, end] {
    end.wait();
    return ++*asked > 0;
  };
  EXPECT_FALSE(digestOfFile(source, DigestAlgorithm::md5, slowly).isNull());
  EXPECT_EQ(*asked, 0) << "nobody waits for the answer";
  returned.set_value();
  // The delegate here holds it, too.
  ASSERT_TRUE(isLetGo(asked, 2));
  EXPECT_EQ(*asked, blocks);
}

}  // namespace
