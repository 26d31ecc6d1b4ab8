#include <gtest/gtest.h>

#include "movie/atoms/ImageDescription.h"
#include "tests/movie/atoms/BuiltFiles.h"

namespace movie {
namespace {

using namespace test;

const Bytes fiel = AtomBuilder("fiel").u8(1).u8(0).build();
ImageDescription describing(const std::vector<Bytes>& extensions, const Bytes& rest = {}) {
  return ImageDescription(entryWith(extensions, rest));
}

std::vector<FourCC> typesOf(const ImageDescription& description) {
  std::vector<FourCC> types;
  for (const Atom& extension : description.extensions()) types.push_back(extension.type);
  return types;
}

TEST(ImageDescription, ReadsItsHeader) {
  ImageEntry entry;
  entry.codec = "avc1";
  entry.width = 1280;
  entry.height = 720;
  entry.depth = 40;
  const ImageDescription description(entry.build());
  EXPECT_EQ(description.codec(), fourCC("avc1"));
  EXPECT_EQ(description.width(), 1280);
  EXPECT_EQ(description.height(), 720);
  EXPECT_EQ(description.depth(), 40);
}

TEST(ImageDescription, ReadsExtensionsBehindEightySixBytesWhateverTheVersion) {
  for (const unsigned version : {0U, 1U, 2U, 3U, 0xFFFFU}) {
    ImageEntry entry;
    entry.version = version;
    entry.extensions = {gamaExtension(0x20000), fiel};
    const ImageDescription description(entry.build());
    ASSERT_EQ(description.extensions().size(), 2U);
    EXPECT_EQ(description.extensions()[0].offset, 86U);
    EXPECT_EQ(description.gamma(), 0x20000);
  }
}

TEST(ImageDescription, HasNoPropertiesWithoutExtensions) {
  const ImageDescription description = describing({});
  EXPECT_FALSE(description.gamma());
  EXPECT_FALSE(description.nclc());
  EXPECT_FALSE(description.nclxFullRange());
  EXPECT_FALSE(description.iccProfile());
  EXPECT_FALSE(description.cleanAperture());
}

struct ColorTableRow {
  const char* name;
  unsigned depth, tableId;
  Bytes table;
  bool skipped;
  friend void PrintTo(const ColorTableRow& row, std::ostream* out) { *out << row.name; }
};

class ColorTables : public testing::TestWithParam<ColorTableRow> {};

TEST_P(ColorTables, StandBeforeTheExtensions) {
  ImageEntry entry;
  entry.depth = GetParam().depth;
  entry.colorTableId = GetParam().tableId;
  entry.colorTable = GetParam().table;
  entry.extensions = {gamaExtension(0x1CCCC)};
  const ImageDescription description(entry.build());
  EXPECT_EQ(description.gamma().has_value(), GetParam().skipped);
  if (!GetParam().skipped) return;
  EXPECT_EQ(description.extensions()[0].offset, 86U + GetParam().table.size());
}

/// A colour table of `entries` entries.
Bytes colorTable(std::size_t entries) {
  Bytes table(8 + 8 * entries, 0x11);
  write16(table, 6, static_cast<std::uint16_t>(entries - 1));
  return table;
}

INSTANTIATE_TEST_SUITE_P(Depths, ColorTables,
                         testing::Values(ColorTableRow{"One", 1, 0, colorTable(2), true},
                                         ColorTableRow{"Two", 2, 0, colorTable(4), true},
                                         ColorTableRow{"Four", 4, 0, colorTable(16), true},
                                         ColorTableRow{"Eight", 8, 0, colorTable(256), true},
                                         ColorTableRow{"EightOfGrey", 40, 0, colorTable(256), true},
                                         ColorTableRow{"EightWithoutATable", 8, 0xFFFF, {}, true},
                                         ColorTableRow{"TwentyFourWithATableIdOfZero", 24, 0, {}, true},
                                         ColorTableRow{"EightWhereTheTableWouldNotFit", 8, 0, {}, true},
                                         ColorTableRow{"SixteenWithATableAllTheSame", 16, 0, colorTable(2), false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ImageDescription, ReadsGammaAsAFixedPointNumber) {
  EXPECT_EQ(describing({fiel, gamaExtension(0x00023333)}).gamma(), 0x00023333);
  EXPECT_EQ(describing({gamaExtension(-65536)}).gamma(), -65536);
}

TEST(ImageDescription, TakesTheFirstWellFormedAtomOfAKind) {
  const Bytes shortGamma = AtomBuilder("gama").u16(7).build();
  EXPECT_EQ(describing({shortGamma, gamaExtension(2), gamaExtension(3)}).gamma(), 2);

  const Bytes shortColor = AtomBuilder("colr").code("nclc").u16(9).build();
  const Bytes emptyColor = AtomBuilder("colr").build();
  const auto color = describing({emptyColor, shortColor, nclxExtension(9, 16, 9, 0), nclcExtension(1, 1, 1)}).nclc();
  ASSERT_TRUE(color);
  EXPECT_EQ(*color, (NclcParameters{fourCC("nclc"), 9, 16, 9}));

  const Bytes emptyProfile = profileExtension("prof", Bytes{});
  const auto profile =
      describing({emptyProfile, profileExtension("rICC", Bytes{1, 2}), profileExtension("prof", Bytes{3})})
          .iccProfile();
  ASSERT_TRUE(profile);
  EXPECT_EQ(*profile, (Bytes{1, 2}));
}

TEST(ImageDescription, ReadsNclxAsNclcSoThatMovAndMp4Compare) {
  EXPECT_EQ(describing({nclxExtension(1, 13, 6, 0x80)}).nclc(), describing({nclcExtension(1, 13, 6)}).nclc());
}

TEST(ImageDescription, ReadsTheRangeOfNclxOnly) {
  EXPECT_EQ(describing({nclxExtension(1, 1, 1, 0x80)}).nclxFullRange(), true);
  EXPECT_EQ(describing({nclxExtension(1, 1, 1, 0x7F)}).nclxFullRange(), false);
  EXPECT_EQ(describing({nclcExtension(1, 1, 1)}).nclxFullRange(), std::nullopt);
  const Bytes withoutRange = AtomBuilder("colr").code("nclx").u16(1).u16(2).u16(3).build();
  EXPECT_EQ(describing({withoutRange}).nclxFullRange(), std::nullopt);
  EXPECT_EQ(describing({withoutRange}).nclc()->matrix, 3);
}

TEST(ImageDescription, KeepsARecordAndAProfileApart) {
  const ImageDescription description = describing({profileExtension("prof", Bytes{5}), nclcExtension(6, 1, 6)});
  EXPECT_EQ(description.nclc()->primaries, 6);
  EXPECT_EQ(*description.iccProfile(), Bytes{5});
}

TEST(ImageDescription, EndsTheExtensionsAtASizeThatDoesNotFit) {
  for (const std::uint32_t size : {0U, 1U, 7U, 13U, 0xFFFFFFFFU}) {
    Bytes broken = gamaExtension(7);
    write32(broken, 0, size);
    const ImageDescription description = describing({fiel, broken});
    EXPECT_EQ(typesOf(description), std::vector<FourCC>{fourCC("fiel")}) << size;
    EXPECT_FALSE(description.gamma()) << size;
  }
}

// --- setting ---

TEST(ImageDescription, RewritesGammaWhereItStands) {
  Bytes longGamma = AtomBuilder("gama").u32(1).u32(0xAABBCCDD).build();
  const Bytes before = entryWith({fiel, longGamma, unknownExtension()}, Bytes(4, 0));
  ImageDescription description(before);
  ASSERT_EQ(description.setGamma(0x12345678), noErr);
  EXPECT_EQ(description.gamma(), 0x12345678);
  Bytes expected = before;
  write32(expected, 86 + fiel.size() + 8, 0x12345678);
  EXPECT_EQ(description.bytes(), expected);
}

TEST(ImageDescription, RewritesOnlyTheFirstGamma) {
  ImageDescription description = describing({gamaExtension(1), gamaExtension(2)});
  ASSERT_EQ(description.setGamma(3), noErr);
  EXPECT_EQ(description.bytes(), entryWith({gamaExtension(3), gamaExtension(2)}));
}

TEST(ImageDescription, RewritesARecordWithItsTypeAndItsRange) {
  ImageDescription description = describing({nclxExtension(9, 16, 9, 0x80), fiel});
  ASSERT_EQ(description.setNclc({0, 1, 2, 3}, ColorAtomFlavour::Nclc), noErr);
  EXPECT_EQ(description.bytes(), entryWith({nclxExtension(1, 2, 3, 0x80), fiel}));

  ImageDescription quickTime = describing({fiel, nclcExtension(9, 16, 9)});
  ASSERT_EQ(quickTime.setNclc({fourCC("nclc"), 1, 2, 3}, ColorAtomFlavour::NclxFullRange), noErr);
  EXPECT_EQ(quickTime.bytes(), entryWith({fiel, nclcExtension(1, 2, 3)}));
}

TEST(ImageDescription, MakesANewRecordOfTheFlavourAskedFor) {
  const NclcParameters parameters{fourCC("nclc"), 9, 16, 10};
  const std::vector<std::pair<ColorAtomFlavour, Bytes>> rows{
      {ColorAtomFlavour::Nclc, nclcExtension(9, 16, 10)},
      {ColorAtomFlavour::NclxVideoRange, nclxExtension(9, 16, 10, 0)},
      {ColorAtomFlavour::NclxFullRange, nclxExtension(9, 16, 10, 0x80)}};
  for (const auto& [flavour, atom] : rows) {
    ImageDescription description = describing({fiel});
    ASSERT_EQ(description.setNclc(parameters, flavour), noErr);
    EXPECT_EQ(description.bytes(), entryWith({fiel, atom}));
    EXPECT_EQ(description.nclc(), parameters);
  }
}

TEST(ImageDescription, PutsANewExtensionBehindTheLastAndBeforeTheRest) {
  for (const Bytes& rest :
       {Bytes{}, Bytes(4, 0), Bytes(8, 0), Bytes{1, 2, 3}, Bytes{0, 0, 0, 99, 'g', 'a', 'm', 'a'}}) {
    ImageDescription description = describing({fiel, unknownExtension()}, rest);
    ASSERT_EQ(description.setGamma(0x23333), noErr);
    EXPECT_EQ(description.bytes(), entryWith({fiel, unknownExtension(), gamaExtension(0x23333)}, rest));
  }
}

TEST(ImageDescription, PutsANewExtensionBehindTheColourTable) {
  ImageEntry entry;
  entry.depth = 8;
  entry.colorTableId = 0;
  entry.colorTable = colorTable(3);
  ImageDescription description(entry.build());
  ASSERT_EQ(description.setGamma(0x20000), noErr);
  entry.extensions = {gamaExtension(0x20000)};
  EXPECT_EQ(description.bytes(), entry.build());
}

TEST(ImageDescription, ReplacesAProfileByOneOfAnotherLength) {
  for (const std::size_t length : {std::size_t{1}, std::size_t{3}, std::size_t{500}}) {
    const Bytes profile(length, 0x77);
    ImageDescription description =
        describing({fiel, profileExtension("prof", Bytes{1, 2, 3}), unknownExtension()}, Bytes(4, 0));
    ASSERT_EQ(description.setIccProfile(profile), noErr);
    EXPECT_EQ(description.bytes(),
              entryWith({fiel, profileExtension("prof", profile), unknownExtension()}, Bytes(4, 0)));
    EXPECT_EQ(description.iccProfile(), profile);
  }
}

TEST(ImageDescription, TurnsRICCIntoProf) {
  ImageDescription description = describing({profileExtension("rICC", Bytes{1, 2, 3}), fiel});
  ASSERT_EQ(description.setIccProfile(Bytes{9}), noErr);
  EXPECT_EQ(description.bytes(), entryWith({profileExtension("prof", Bytes{9}), fiel}));
}

TEST(ImageDescription, SettingOneKindNeverTouchesAnother) {
  const Bytes profile = profileExtension("prof", Bytes{1, 2});
  ImageDescription record = describing({profile});
  ASSERT_EQ(record.setNclc({0, 1, 1, 1}, ColorAtomFlavour::Nclc), noErr);
  EXPECT_EQ(record.bytes(), entryWith({profile, nclcExtension(1, 1, 1)}));

  ImageDescription description = describing({nclcExtension(6, 1, 6), gamaExtension(4)});
  ASSERT_EQ(description.setIccProfile(Bytes{8}), noErr);
  EXPECT_EQ(description.bytes(),
            entryWith({nclcExtension(6, 1, 6), gamaExtension(4), profileExtension("prof", Bytes{8})}));
}

TEST(ImageDescription, RefusesAnEmptyProfile) {
  ImageDescription description = describing({fiel});
  EXPECT_EQ(description.setIccProfile({}), paramErr);
  EXPECT_EQ(description.bytes(), entryWith({fiel}));
}

// --- removing ---

TEST(ImageDescription, RemovesOnlyTheFirstExtensionOfAType) {
  ImageDescription description =
      describing({fiel, gamaExtension(1), unknownExtension(), gamaExtension(2)}, Bytes(4, 0));
  ASSERT_EQ(description.removeExtension(fourCC("gama")), noErr);
  EXPECT_EQ(description.bytes(), entryWith({fiel, unknownExtension(), gamaExtension(2)}, Bytes(4, 0)));
  EXPECT_EQ(description.gamma(), 2);
}

TEST(ImageDescription, RemovesAnAtomOfTheTypeEvenWhenItIsTooShortForTheProperty) {
  ImageDescription description = describing({AtomBuilder("gama").build(), gamaExtension(2)});
  ASSERT_EQ(description.removeExtension(fourCC("gama")), noErr);
  EXPECT_EQ(description.bytes(), entryWith({gamaExtension(2)}));
}

TEST(ImageDescription, FindsNothingToRemoveByAPropertyThatIsNoAtomType) {
  const Bytes before = entryWith({nclcExtension(1, 1, 1), profileExtension("prof", Bytes{1})});
  ImageDescription description(before);
  for (const FourCC type : {fourCC("nclc"), fourCC("iccp"), fourCC("gama")}) {
    EXPECT_EQ(description.removeExtension(type), codecExtensionNotFoundErr);
  }
  EXPECT_EQ(codecExtensionNotFoundErr, -8971);
  EXPECT_EQ(description.bytes(), before);
}

TEST(ImageDescription, IsItselfAgainAfterAPropertyWasAddedAndRemoved) {
  for (const Bytes& rest : {Bytes{}, Bytes(4, 0), Bytes{0, 0, 0, 1, 2, 3, 4, 5, 6}}) {
    const Bytes before = entryWith({fiel, unknownExtension()}, rest);
    ImageDescription description(before);
    ASSERT_EQ(description.setGamma(0x20000), noErr);
    ASSERT_EQ(description.removeExtension(fourCC("gama")), noErr);
    EXPECT_EQ(description.bytes(), before);
    ASSERT_EQ(description.setIccProfile(Bytes(3000, 5)), noErr);
    ASSERT_EQ(description.removeExtension(fourCC("colr")), noErr);
    EXPECT_EQ(description.bytes(), before);
  }
}

// --- entries that are no full image description ---

TEST(ImageDescription, PadsAShortEntryAndRefusesToEditIt) {
  const Bytes whole = entryWith({});
  for (std::size_t length = 0; length < ImageDescription::headerSize; ++length) {
    const Bytes before(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    ImageDescription description(before);
    EXPECT_EQ(description.codec(), length >= 8 ? fourCC("apch") : 0U);
    EXPECT_EQ(description.width(), length >= 34 ? 1920 : 0);
    EXPECT_EQ(description.depth(), length >= 84 ? 24 : 0);
    EXPECT_TRUE(description.extensions().empty());
    EXPECT_EQ(description.setGamma(1), paramErr);
    EXPECT_EQ(description.setNclc({0, 1, 1, 1}, ColorAtomFlavour::Nclc), paramErr);
    EXPECT_EQ(description.setIccProfile(Bytes{1}), paramErr);
    EXPECT_EQ(description.removeExtension(fourCC("gama")), paramErr);
    EXPECT_EQ(description.bytes(), before);
  }
}

TEST(ImageDescription, RefusesToEditAnEntryWithASixtyFourBitSize) {
  Bytes before = entryWith({gamaExtension(2)});
  write32(before, 0, 1);
  ImageDescription description(before);
  EXPECT_FALSE(description.gamma());
  EXPECT_EQ(description.setGamma(1), paramErr);
  EXPECT_EQ(description.bytes(), before);
}

// --- clean aperture ---

struct ApertureRow {
  const char* name;
  std::array<std::int32_t, 8> fields;
  bool valid;
  friend void PrintTo(const ApertureRow& row, std::ostream* out) { *out << row.name; }
};

class CleanApertures : public testing::TestWithParam<ApertureRow> {};

TEST_P(CleanApertures, AreTakenOnlyWhenTheyLieInsideThePicture) {
  const auto aperture = describing({clapExtension(GetParam().fields)}).cleanAperture();
  EXPECT_EQ(aperture.has_value(), GetParam().valid);
}

constexpr std::int32_t big = 0x7FFFFFFF;
INSTANTIATE_TEST_SUITE_P(Of1920By1080, CleanApertures,
                         testing::Values(ApertureRow{"Inside", {1900, 1, 1060, 1, 0, 1, 0, 1}, true},
                                         ApertureRow{"TheWholePicture", {1920, 1, 1080, 1, 0, 1, 0, 1}, true},
                                         ApertureRow{"UpToTheEdges", {1900, 1, 1060, 1, -10, 1, 20, 2}, true},
                                         ApertureRow{"PastTheLeftEdge", {1900, 1, 1060, 1, -11, 1, 0, 1}, false},
                                         ApertureRow{"PastTheBottom", {1900, 1, 1060, 1, 0, 1, 21, 2}, false},
                                         ApertureRow{"TooWide", {1921, 1, 1080, 1, 0, 1, 0, 1}, false},
                                         ApertureRow{"TooHigh", {1920, 1, 1081, 1, 0, 1, 0, 1}, false},
                                         ApertureRow{"Huge", {big, 1, big, 1, big, 1, big, 1}, false},
                                         ApertureRow{"WidthOfZero", {0, 1, 1080, 1, 0, 1, 0, 1}, false},
                                         ApertureRow{"OnePixel", {1, 1, 1, 1, 0, 1, 0, 1}, true},
                                         ApertureRow{"HalfAPixelWide", {4300, 7700, 1080, 1, 0, 1, 0, 1}, false},
                                         ApertureRow{"HalfAPixelHigh", {1920, 1, 1, 2, 0, 1, 0, 1}, false},
                                         ApertureRow{"NegativeHeight", {1920, 1, -5, 1, 0, 1, 0, 1}, false},
                                         ApertureRow{"WidthOverZero", {1920, 0, 1080, 1, 0, 1, 0, 1}, false},
                                         ApertureRow{"HeightOverZero", {1920, 1, 1080, 0, 0, 1, 0, 1}, false},
                                         ApertureRow{"OffsetOverZero", {1920, 1, 1080, 1, 0, 0, 0, 1}, false},
                                         ApertureRow{"VerticalOffsetOverZero", {1920, 1, 1080, 1, 0, 1, 0, 0}, false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ImageDescription, ReadsACleanApertureAsFractions) {
  const auto aperture = describing({clapExtension({1917, 2, 1001, 4, -3, 2, 5, 4})}).cleanAperture();
  ASSERT_TRUE(aperture);
  EXPECT_DOUBLE_EQ(aperture->width, 958.5);
  EXPECT_DOUBLE_EQ(aperture->height, 250.25);
  EXPECT_DOUBLE_EQ(aperture->horizontalOffset, -1.5);
  EXPECT_DOUBLE_EQ(aperture->verticalOffset, 1.25);
}

TEST(ImageDescription, PassesOverACleanApertureThatIsCutOff) {
  const auto aperture = describing({AtomBuilder("clap").zeros(31).build(), clapExtension({2, 1, 2, 1, 0, 1, 0, 1})});
  EXPECT_EQ(aperture.cleanAperture()->width, 2);
}

}  // namespace
}  // namespace movie
