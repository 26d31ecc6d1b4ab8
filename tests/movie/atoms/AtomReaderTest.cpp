#include <gtest/gtest.h>

#include "movie/atoms/AtomReader.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using test::AtomBuilder;
using test::atomOf;
using test::joined;

TEST(AtomReader, ReadsAtomsInOrderWithTheirPlaces) {
  const Bytes bytes = joined({AtomBuilder("free").zeros(4).build(), AtomBuilder("moov").build()});
  const AtomList list = readAtoms(bytes);
  ASSERT_EQ(list.atoms.size(), 2U);
  EXPECT_EQ(list.atoms[0].type, fourCC("free"));
  EXPECT_EQ(list.atoms[0].bodyOffset(), 8U);
  EXPECT_EQ(list.atoms[0].bodySize(), 4U);
  EXPECT_EQ(list.atoms[1].offset, 12U);
  EXPECT_EQ(list.atoms[1].end(), 20U);
  EXPECT_EQ(list.defect, AtomDefect::None);
}

TEST(AtomReader, ReadsASixtyFourBitSize) {
  AtomBuilder wide("mdat");
  Bytes bytes = wide.u64(20).zeros(4).build();
  write32(bytes, 0, 1);
  const AtomList list = readAtoms(bytes);
  ASSERT_EQ(list.atoms.size(), 1U);
  EXPECT_EQ(list.atoms[0].headerSize, 16U);
  EXPECT_EQ(list.atoms[0].bodySize(), 4U);
}

TEST(AtomReader, GivesChildrenTheirPlaceInTheWholeBytes) {
  const Bytes bytes = joined({AtomBuilder("free").build(), atomOf("moov", {AtomBuilder("mvhd").build()})});
  const AtomList list = readAtoms(bytes);
  ASSERT_EQ(list.atoms.size(), 2U);
  const AtomList children = readChildren(bytes, list.atoms[1]);
  ASSERT_EQ(children.atoms.size(), 1U);
  EXPECT_EQ(children.atoms[0].offset, 16U);
}

TEST(AtomReader, FindsTheFirstOfAType) {
  const AtomList list = readAtoms(joined({AtomBuilder("colr").build(), AtomBuilder("colr").zeros(1).build()}));
  EXPECT_EQ(firstAtom(list, fourCC("colr"))->size, 8U);
  EXPECT_FALSE(firstAtom(list, fourCC("gama")).has_value());
}

struct DefectRow {
  const char* name;
  Bytes second;
  AtomDefect defect;
  bool malformed;
  friend void PrintTo(const DefectRow& row, std::ostream* out) { *out << row.name; }
};

Bytes sized(std::uint32_t size, std::string_view type, std::size_t body, std::uint64_t wideSize = 0) {
  Bytes bytes = AtomBuilder(type).u64(wideSize).zeros(body).build();
  write32(bytes, 0, size);
  return bytes;
}

class AtomDefects : public testing::TestWithParam<DefectRow> {};

TEST_P(AtomDefects, StopsTheWalkAndKeepsWhatStandsBefore) {
  const AtomList list = readAtoms(joined({AtomBuilder("free").build(), GetParam().second}));
  EXPECT_EQ(list.atoms.size(), 1U);
  EXPECT_EQ(list.defect, GetParam().defect);
  EXPECT_EQ(list.defectOffset, 8U);
  EXPECT_EQ(list.malformed(), GetParam().malformed);
}

INSTANTIATE_TEST_SUITE_P(
    Headers, AtomDefects,
    testing::Values(DefectRow{"SizeZero", sized(0, "moov", 4), AtomDefect::SizeBelowHeader, true},
                    DefectRow{"SizeSeven", sized(7, "moov", 4), AtomDefect::SizeBelowHeader, true},
                    DefectRow{"SizeMaximum", sized(0xFFFFFFFF, "moov", 4), AtomDefect::ReachesPastParent, true},
                    DefectRow{"OneByteTooLarge", sized(21, "moov", 4), AtomDefect::ReachesPastParent, true},
                    DefectRow{"WideSizeFifteen", sized(1, "moov", 4, 15), AtomDefect::SizeBelowHeader, true},
                    DefectRow{"WideSizeMaximum", sized(1, "moov", 4, UINT64_MAX), AtomDefect::ReachesPastParent, true},
                    DefectRow{"WideSizeCutOff", Bytes{0, 0, 0, 1, 'm', 'o', 'o', 'v', 0, 0},
                              AtomDefect::ReachesPastParent, true},
                    DefectRow{"Terminator", Bytes(4, 0), AtomDefect::TrailingBytes, false},
                    DefectRow{"SevenBytes", Bytes(7, 9), AtomDefect::TrailingBytes, false},
                    DefectRow{"ZeroPadding", Bytes(32, 0), AtomDefect::TrailingBytes, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(AtomReader, HoldsTheNumberOfAtoms) {
  Bytes bytes(8 * (maximumAtomCount + 1));
  for (std::size_t at = 0; at < bytes.size(); at += 8) bytes[at + 3] = 8;
  const AtomList list = readAtoms(bytes);
  EXPECT_EQ(list.atoms.size(), maximumAtomCount);
  EXPECT_EQ(list.defect, AtomDefect::TooMany);
  EXPECT_TRUE(list.malformed());
}

}  // namespace
}  // namespace movie
