#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <functional>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/SharedFiles/privileged/Sandbox.h"

namespace privileged {

namespace {

constexpr int runs = 2000;
constexpr int fewest = runs / 20;  ///< how many must have gone either way, for the attack to be one

/// Swaps two names for each other, again and again, until it goes.
class Swapper {
 public:
  Swapper(std::string one, std::string other)
      : thread_([this, one = std::move(one), other = std::move(other)] {
          while (!stop_) {
            ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
            ++swaps_;
            std::this_thread::yield();
          }
        }) {
    while (swaps_ < 2) std::this_thread::yield();
  }
  ~Swapper() {
    stop_ = true;
    thread_.join();
  }
  Swapper(const Swapper&) = delete;
  Swapper& operator=(const Swapper&) = delete;

 private:
  std::atomic<bool> stop_ = false;
  std::atomic<int> swaps_ = 0;
  std::thread thread_;
};

struct Tally {
  int done = 0, refused = 0, harmed = 0;
};

/// A folder `way` that is now a real one, now a link to `protected`. Both hold a file `victim`.
class SwappedFolders : public Sandbox {
 protected:
  SwappedFolders() {
    makeFolder("way");
    link(at("protected"), "swapped");
    write("protected/victim", "precious");
  }
  std::string place(const char* name) const {
    // Whichever of the two names is the real folder's now.
    for (const char* folder : {"way/", "swapped/"}) {
      if (!std::filesystem::is_symlink(root() / std::string(folder).substr(0, std::string(folder).size() - 1)))
        return std::string(folder) + name;
    }
    return std::string("way/") + name;
  }
  /// Goes on, on a busy machine, until enough have gone either way, or have been done; but not for ever.
  Tally runAgainstSwaps(const std::function<void()>& prepare, const std::function<int()>& act, bool eitherWay = true) {
    Tally tally;
    const auto isEnough = [&] { return tally.done > fewest && (tally.refused > fewest || !eitherWay); };
    for (int i = 0; (i < runs || (i < 10 * runs && !isEnough())) && tally.harmed == 0; ++i) {
      prepare();
      int status = 0;
      {
        const Swapper swapper(at("way"), at("swapped"));
        status = act();
      }
      ++(status == 0 ? tally.done : tally.refused);
      if (read("protected/victim") != "precious" || namesIn("protected").size() != 2) ++tally.harmed;
    }
    return tally;
  }
  /// The tool by itself, as if nothing were checked or held.
  static int runBare(std::vector<std::string> line) {
    std::vector<char*> pointers;
    for (std::string& argument : line) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    pid_t identifier = 0;
    if (::posix_spawn(&identifier, pointers.front(), nullptr, nullptr, pointers.data(), environ) != 0) return -1;
    int status = 0;
    ::waitpid(identifier, &status, 0);
    return status;
  }
};

TEST_F(SwappedFolders, NeverLeadARemovalAstray) {
  const Tally tally =
      runAgainstSwaps([this] { write(place("victim"), "mine"); }, [this] { return remove("way/victim"); });
  EXPECT_EQ(tally.harmed, 0);
  EXPECT_GT(tally.done, fewest);
  EXPECT_GT(tally.refused, fewest);
}

TEST_F(SwappedFolders, NeverLeadAMoveAstray) {
  const Tally tally = runAgainstSwaps([this] { write("file", "evil"); }, [this] { return move("file", "way/victim"); });
  EXPECT_EQ(tally.harmed, 0);
  EXPECT_GT(tally.done, fewest);
  EXPECT_GT(tally.refused, fewest);
}

TEST_F(SwappedFolders, NeverLeadACopyAstray) {
  write("file", "evil");
  const Tally tally = runAgainstSwaps([] {}, [this] { return copy("file", "way/victim"); });
  EXPECT_EQ(tally.harmed, 0);
  EXPECT_GT(tally.done, fewest);
  EXPECT_GT(tally.refused, fewest);
}

TEST_F(SwappedFolders, NeverLeadNewFoldersAstray) {
  const Tally tally = runAgainstSwaps([this] { std::filesystem::remove_all(root() / place("new")); },
                                      [this] { return makeFolders("way/new/er"); });
  EXPECT_EQ(tally.harmed, 0);
  EXPECT_GT(tally.done, fewest);
  EXPECT_GT(tally.refused, fewest);
}

/// The destination itself is now a folder, now a link to a protected one.
TEST_F(SwappedFolders, NeverLeadACopyIntoThemAstray) {
  write("name", "evil");
  const Tally tally = runAgainstSwaps(
      [this] {
        // A link that was replaced by the copy is laid again.
        for (const char* name : {"way", "swapped"}) {
          if (std::filesystem::is_regular_file(std::filesystem::symlink_status(root() / name))) {
            std::filesystem::remove(root() / name);
            link(at("protected"), name);
          }
        }
      },
      [this] { return copy("name", "way"); }, false);
  EXPECT_EQ(tally.harmed, 0);
  EXPECT_GT(tally.done, fewest);
}

/// Shows that the attack is one: a tool that is run by the path alone is led astray.
TEST_F(SwappedFolders, LeadABareToolAstray) {
  const Tally tally = runAgainstSwaps([this] { write(place("victim"), "mine"); },
                                      [this] {
                                        return runBare({"/bin/rm", "-Rdf", at("way/victim")});
                                      });
  EXPECT_EQ(tally.harmed, 1);
}

}  // namespace

}  // namespace privileged
