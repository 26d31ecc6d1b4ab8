#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fuzz/FuzzInputs.h"

namespace {

struct Target {
  const char* name;
  std::string (*run)(fuzz::ByteView);
  std::size_t seeds;  ///< there are at least that many
};

void PrintTo(const Target& target, std::ostream* out) {
  *out << target.name;
}

std::vector<std::filesystem::path> inputsOf(const Target& target) {
  std::vector<std::filesystem::path> files;
  const auto folder = std::filesystem::path(LUMACHECK_FUZZ_CORPUS) / target.name;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

fuzz::Bytes contentOf(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class FuzzInputs : public testing::TestWithParam<Target> {};

TEST_P(FuzzInputs, AllHoldAndEndSoon) {
  const auto files = inputsOf(GetParam());
  EXPECT_GE(files.size(), GetParam().seeds);
  for (const auto& path : files) {
    const fuzz::Bytes input = contentOf(path);
    EXPECT_FALSE(input.empty()) << path;
    const std::clock_t begin = std::clock();
    EXPECT_EQ(GetParam().run(input), "") << path;
    EXPECT_LT(std::clock() - begin, 5 * CLOCKS_PER_SEC) << path;
  }
}

/// Cut anywhere, a seed is the most common damage.
TEST_P(FuzzInputs, HoldWhenCut) {
  const auto files = inputsOf(GetParam());
  for (std::size_t i = 0; i < std::min<std::size_t>(files.size(), 3); ++i) {
    const fuzz::Bytes input = contentOf(files[i]);
    for (std::size_t size = 0; size < input.size(); size += 1 + input.size() / 50) {
      EXPECT_EQ(GetParam().run(fuzz::ByteView(input).first(size)), "") << files[i] << " cut at " << size;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, FuzzInputs,
                         testing::Values(Target{"atoms", fuzz::tryAtoms, 20}, Target{"edit", fuzz::tryEdit, 10},
                                         Target{"save", fuzz::trySave, 30}, Target{"flattened", fuzz::tryFlattened, 8},
                                         Target{"property_lists", fuzz::tryPropertyList, 8},
                                         Target{"resume", fuzz::tryResume, 4}),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
