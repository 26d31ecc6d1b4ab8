#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "movie/save/MediaExtents.h"

namespace movie {
namespace {

using Places = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

MediaExtents settled(const Places& offsetsAndSizes) {
  MediaExtents extents;
  for (const auto& [offset, size] : offsetsAndSizes) extents.add(offset, size);
  extents.settle();
  return extents;
}

TEST(MediaExtents, AreFoundInWhateverOrderTheyCame) {
  const struct {
    const char* name;
    Places added;
    std::uint64_t begin, end;
    bool overlaps;
  } rows[] = {
      {"none", {}, 0, 100, false},
      {"the byte before", {{10, 5}}, 0, 10, false},
      {"its first byte", {{10, 5}}, 0, 11, true},
      {"its last byte", {{10, 5}}, 14, 20, true},
      {"the byte behind", {{10, 5}}, 15, 20, false},
      {"nothing is asked", {{10, 5}}, 12, 12, false},
      {"an empty one counts as a byte", {{10, 0}}, 10, 11, true},
      {"between two", {{30, 5}, {10, 5}}, 15, 30, false},
      {"the later one, which came first", {{30, 5}, {10, 5}}, 20, 31, true},
      {"one within another", {{0, 1000}, {10, 10}}, 500, 600, true},
      {"two that overlap", {{0, 100}, {50, 100}}, 120, 130, true},
      {"two that touch, out of order", {{50, 50}, {0, 50}}, 40, 60, true},
      {"one cut at the largest offset", {{UINT64_MAX - 1, 5}}, UINT64_MAX - 1, UINT64_MAX, true},
  };
  for (const auto& row : rows) EXPECT_EQ(settled(row.added).overlaps(row.begin, row.end), row.overlaps) << row.name;
}

TEST(MediaExtents, EndBehindTheFarthest) {
  EXPECT_EQ(settled({}).end(), 0U);
  EXPECT_EQ(settled({{0, 1000}, {10, 10}}).end(), 1000U);
  EXPECT_EQ(settled({{30, 5}, {10, 5}}).end(), 35U);
}

}  // namespace
}  // namespace movie
