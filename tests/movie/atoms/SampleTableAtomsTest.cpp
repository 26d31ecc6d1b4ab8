#include <gtest/gtest.h>

#include "movie/atoms/SampleTableAtoms.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using test::AtomBuilder;

/// The tables of some atoms, with the bytes that they look into.
struct Tables {
  Bytes bytes;
  SampleTableAtoms atoms;

  explicit Tables(const std::vector<Bytes>& parts)
      : bytes(test::joined(parts)), atoms(SampleTableAtoms::among(bytes, readAtoms(bytes))) {}
  SampleTable table() const { return SampleTable(atoms.timeRuns(), atoms.syncSamples()); }
};

Bytes pairs(const char* type, const std::vector<std::pair<std::uint32_t, std::int64_t>>& rows, unsigned version = 0) {
  AtomBuilder atom(type);
  atom.versionAndFlags(version).u32(static_cast<std::uint32_t>(rows.size()));
  for (const auto& [count, value] : rows) atom.u32(count).u32(static_cast<std::uint32_t>(value));
  return atom.build();
}

Bytes numbers(const char* type, const std::vector<std::uint32_t>& rows) {
  AtomBuilder atom(type);
  atom.u32(0).u32(static_cast<std::uint32_t>(rows.size()));
  for (const std::uint32_t row : rows) atom.u32(row);
  return atom.build();
}

Bytes chunkRuns(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& rows) {
  AtomBuilder atom("stsc");
  atom.u32(0).u32(static_cast<std::uint32_t>(rows.size()));
  for (const auto& [first, perChunk] : rows) atom.u32(first).u32(perChunk).u32(1);
  return atom.build();
}

Bytes constantSize(std::uint32_t size, std::uint32_t count) {
  return AtomBuilder("stsz").u32(0).u32(size).u32(count).build();
}

Bytes sizes(const std::vector<std::uint32_t>& each) {
  AtomBuilder atom("stsz");
  atom.u32(0).u32(0).u32(static_cast<std::uint32_t>(each.size()));
  for (const std::uint32_t size : each) atom.u32(size);
  return atom.build();
}

TEST(SampleTableAtoms, HaveNothingWithoutAtoms) {
  const Tables tables({});
  EXPECT_EQ(tables.atoms.sampleCount(), 0U);
  EXPECT_TRUE(tables.atoms.timeRuns().empty());
  EXPECT_FALSE(tables.atoms.syncSamples());
  EXPECT_FALSE(tables.atoms.locationOf(0));
}

struct CountRow {
  const char* name;
  std::vector<Bytes> atoms;
  std::uint64_t count;
  friend void PrintTo(const CountRow& row, std::ostream* out) { *out << row.name; }
};

class SampleCounts : public testing::TestWithParam<CountRow> {};

TEST_P(SampleCounts, AreHeldToTheBytesThatAreThere) {
  EXPECT_EQ(Tables(GetParam().atoms).atoms.sampleCount(), GetParam().count);
}

INSTANTIATE_TEST_SUITE_P(
    Tables, SampleCounts,
    testing::Values(
        CountRow{"SizesOfEach", {sizes({1, 2, 3})}, 3},
        CountRow{"OneSizeForAll", {constantSize(4, 1'000'000)}, 1'000'000},
        CountRow{"MoreThanTheSizes", {AtomBuilder("stsz").u32(0).u32(0).u32(0xFFFFFFFF).u32(9).u32(9).build()}, 2},
        CountRow{"OfDurationsWithoutSizes", {pairs("stts", {{3, 1}, {4, 2}})}, 7},
        CountRow{"SizesCutOff", {AtomBuilder("stsz").u32(0).u32(0).u16(0).build(), pairs("stts", {{3, 1}})}, 3},
        CountRow{"CompactFour", {AtomBuilder("stz2").u32(0).u32(4).u32(3).u8(0x12).u8(0x30).build()}, 3},
        CountRow{"CompactFourCutOff", {AtomBuilder("stz2").u32(0).u32(4).u32(99).u8(0x12).build()}, 2},
        CountRow{"CompactEight", {AtomBuilder("stz2").u32(0).u32(8).u32(2).u8(1).u8(2).build()}, 2},
        CountRow{"CompactSixteen", {AtomBuilder("stz2").u32(0).u32(16).u32(2).u16(1).u16(2).build()}, 2},
        CountRow{"CompactSeven", {AtomBuilder("stz2").u32(0).u32(7).u32(2).u16(1).u16(2).build()}, 0},
        CountRow{"TheFirstOfTwo", {sizes({1}), sizes({1, 2})}, 1}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(SampleTableAtoms, LayDurationsAndOffsetsOverEachOther) {
  const Tables tables({constantSize(1, 6), pairs("stts", {{4, 10}, {2, 20}}), pairs("ctts", {{3, 5}, {2, 7}})});
  const SampleTable table = tables.table();
  ASSERT_EQ(table.sampleCount(), 6U);
  EXPECT_EQ(table.duration(), 80);
  const std::vector<std::int64_t> shown{5, 15, 25, 37, 47, 60};
  for (std::size_t i = 0; i < shown.size(); ++i) EXPECT_EQ(table.presentationTimeOf(i), shown[i]) << i;
}

TEST(SampleTableAtoms, TakeOffsetsAsSignedInEitherVersion) {
  for (const unsigned version : {0U, 1U}) {
    const Tables tables({constantSize(1, 2), pairs("stts", {{2, 10}}), pairs("ctts", {{1, 0}, {1, -4}}, version)});
    EXPECT_EQ(tables.table().presentationTimeOf(1), 6);
  }
}

TEST(SampleTableAtoms, PassOverOffsetsOfNoSamples) {
  const Tables tables(
      {constantSize(1, 2), pairs("stts", {{2, 10}}), pairs("ctts", {{0, 99}, {1, 1}, {0, 98}, {1, 2}})});
  EXPECT_EQ(tables.table().presentationTimeOf(0), 1);
  EXPECT_EQ(tables.table().presentationTimeOf(1), 12);
}

TEST(SampleTableAtoms, LetTheLastDurationGoOn) {
  const Tables tables({constantSize(1, 5), pairs("stts", {{1, 10}, {1, 20}})});
  EXPECT_EQ(tables.table().sampleCount(), 5U);
  EXPECT_EQ(tables.table().duration(), 90);
}

TEST(SampleTableAtoms, HaveNoMoreTimesThanSamples) {
  const Tables tables({constantSize(1, 2), pairs("stts", {{9, 10}})});
  EXPECT_EQ(tables.table().sampleCount(), 2U);
}

TEST(SampleTableAtoms, CountASmallNegativeDurationAsOne) {
  const Tables tables({constantSize(1, 3), pairs("stts", {{1, 10}, {1, -3}, {1, 10}})});
  EXPECT_EQ(tables.table().decodeTimeOf(2), 11);
}

TEST(SampleTableAtoms, CountPartialSyncSamplesToo) {
  const Tables tables({constantSize(1, 20), pairs("stts", {{20, 1}}), numbers("stss", {1, 11}), numbers("stps", {6})});
  EXPECT_EQ(tables.table().syncSampleAtOrBefore(8), 5U);
  EXPECT_EQ(tables.table().syncSampleAtOrBefore(4), 0U);
  EXPECT_EQ(tables.table().syncSampleAtOrBefore(19), 10U);
}

TEST(SampleTableAtoms, TakeEverySampleAsSyncOnlyWithoutAList) {
  const Tables all({constantSize(1, 20), pairs("stts", {{20, 1}}), numbers("stps", {6})});
  EXPECT_EQ(all.table().syncSampleAtOrBefore(8), 8U);
  const Tables none({constantSize(1, 20), pairs("stts", {{20, 1}}), numbers("stss", {})});
  EXPECT_EQ(none.table().syncSampleAtOrBefore(8), 0U);
  const Tables zero({constantSize(1, 20), pairs("stts", {{20, 1}}), numbers("stss", {0, 4})});
  EXPECT_EQ(zero.table().syncSampleAtOrBefore(8), 3U);
}

TEST(SampleTableAtoms, LeadToEachSample) {
  // Two chunks of two samples, then chunks of one.
  const Tables tables(
      {sizes({10, 20, 30, 40, 50, 60}), chunkRuns({{1, 2}, {3, 1}}), numbers("stco", {100, 200, 300, 400})});
  const std::vector<std::pair<std::uint64_t, std::uint64_t>> places{{100, 10}, {110, 20}, {200, 30},
                                                                    {230, 40}, {300, 50}, {400, 60}};
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto location = tables.atoms.locationOf(i);
    ASSERT_TRUE(location) << i;
    EXPECT_EQ(location->offset, places[i].first) << i;
    EXPECT_EQ(location->size, places[i].second) << i;
    const auto& chunk = location->neighbours;
    EXPECT_EQ(chunk.first, i < 4 ? i / 2 * 2 : i) << i;
    EXPECT_EQ(chunk.count, i < 4 ? 2U : 1U) << i;
    EXPECT_EQ(chunk.offset, places[chunk.first].first) << i;
  }
  EXPECT_FALSE(tables.atoms.locationOf(6));
}

TEST(SampleTableAtoms, LeadThroughCompactSizesAndWideOffsets) {
  const Bytes wide = AtomBuilder("co64").u32(0).u32(1).u64(0x1'0000'0005).build();
  const std::vector<Bytes> compact{AtomBuilder("stz2").u32(0).u32(4).u32(3).u8(0x12).u8(0x30).build(),
                                   AtomBuilder("stz2").u32(0).u32(8).u32(3).u8(1).u8(2).u8(3).build(),
                                   AtomBuilder("stz2").u32(0).u32(16).u32(3).u16(1).u16(2).u16(3).build()};
  for (const Bytes& size : compact) {
    const auto location = Tables({size, chunkRuns({{1, 3}}), wide}).atoms.locationOf(2);
    ASSERT_TRUE(location);
    EXPECT_EQ(location->offset, 0x1'0000'0008U);
    EXPECT_EQ(location->size, 3U);
  }
}

TEST(SampleTableAtoms, LeadNowhereWhenTablesDoNot) {
  const std::vector<std::vector<Bytes>> broken{{sizes({1})},
                                               {sizes({1}), chunkRuns({{1, 1}})},
                                               {sizes({1}), numbers("stco", {9})},
                                               {sizes({1}), chunkRuns({{1, 0}}), numbers("stco", {9})},
                                               {sizes({1}), chunkRuns({{0, 1}}), numbers("stco", {9})},
                                               {sizes({1}), chunkRuns({{2, 1}}), numbers("stco", {9})},
                                               {sizes({1}), chunkRuns({{1, 1}}), numbers("stco", {})},
                                               {chunkRuns({{1, 1}}), numbers("stco", {9}), pairs("stts", {{1, 1}})}};
  for (std::size_t i = 0; i < broken.size(); ++i) EXPECT_FALSE(Tables(broken[i]).atoms.locationOf(0)) << i;
}

TEST(SampleTableAtoms, AreQuickWithCountsThatNoBytesStandFor) {
  const Tables tables({constantSize(1, 0xFFFFFFFF), chunkRuns({{1, 0xFFFFFFFF}}), numbers("stco", {0}),
                       pairs("stts", {{0xFFFFFFFF, 1}})});
  EXPECT_EQ(tables.atoms.locationOf(0xFFFFFFFE)->offset, 0xFFFFFFFEU);
  EXPECT_EQ(tables.table().duration(), 0xFFFFFFFF);
}

}  // namespace
}  // namespace movie
