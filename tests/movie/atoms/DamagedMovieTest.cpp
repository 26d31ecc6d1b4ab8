#include <ctime>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using namespace test;

/// Every query that the layers above make.
void useAll(const MovieFile& movie) {
  for (std::size_t i = 0; i < movie.tracks().size(); ++i) {
    const TrackInfo& track = movie.tracks()[i];
    ASSERT_GT(track.mediaTimeScale, 0);
    for (const Bytes& entry : track.sampleDescriptions) {
      ImageDescription description(entry);
      description.cleanAperture();
      description.iccProfile();
      description.nclxFullRange();
      if (description.setGamma(0x20000) != noErr) continue;
      ASSERT_EQ(description.gamma(), 0x20000);
      ASSERT_EQ(description.setNclc({0, 1, 2, 3}, ColorAtomFlavour::Nclc), noErr);
      ASSERT_EQ(description.nclc()->matrix, 3);
      ASSERT_EQ(description.setIccProfile(Bytes{1, 2, 3}), noErr);
      ASSERT_EQ(*description.iccProfile(), (Bytes{1, 2, 3}));
    }
    const SampleTable& table = movie.sampleTable(i);
    for (const std::int64_t time : {INT64_MIN, std::int64_t{0}, std::int64_t{2}, INT64_MAX}) {
      const auto sample = table.presentedAt(time);
      ASSERT_EQ(sample.has_value(), table.sampleCount() > 0);
      if (!sample) continue;
      ASSERT_LT(sample->index, table.sampleCount());
      ASSERT_GE(sample->duration, 0);
      ASSERT_LE(table.syncSampleAtOrBefore(sample->index), sample->index);
    }
    movie.readSample(i, 0, 16);
    movie.readSample(i, track.sampleCount - 1, 16);
  }
}

/// Opens what may be damaged, uses it, and returns what went wrong.
std::optional<MovieError> tryOut(const std::string& path) {
  const std::clock_t begin = std::clock();
  const auto movie = MovieFile::open(path);
  if (movie) useAll(**movie);
  EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC) << "of the processor's time";
  if (movie) return std::nullopt;
  EXPECT_FALSE(movie.error().reason().empty());
  return movie.error();
}

std::optional<MovieError> tryOut(const Bytes& content) {
  return tryOut(TemporaryFile(content).path());
}

Bytes richMoov() {
  MovieSpec movie = test::richMovie();
  movie.tracks[0].edits = {{72, 0, 0x10000}};
  movie.more = {atomOf("udta", {AtomBuilder("name").zeros(4).build(), Bytes(4, 0)})};
  return movie.build();
}

Bytes fragmented() {
  MovieSpec movie;
  movie.more = {test::movieExtends(1, 1, 10, 0)};
  const Bytes fragment = test::richFragment().build();
  return joined({test::typedMediaData("iso5", 64), movie.build(), fragment, AtomBuilder("mdat").zeros(30).build(),
                 fragment, AtomBuilder("mdat").zeros(30).build()});
}

Bytes movieLast() {
  return joined({test::typedMediaData("qt  ", 64), richMoov()});
}
Bytes movieFirst() {
  return joined({test::fileType("isom"), richMoov(), AtomBuilder("mdat").zeros(64).build()});
}
Bytes compressed() {
  return joined({test::typedMediaData("qt  ", 64), test::compressedMovie(richMoov())});
}

const std::vector<std::pair<const char*, Bytes (*)()>> allMovies{
    {"movieLast", movieLast}, {"movieFirst", movieFirst}, {"compressed", compressed}, {"fragmented", fragmented}};

struct Place {
  std::size_t offset;
  std::size_t end;
  std::string path;
};

/// All atoms of a movie with their paths, those inside sample descriptions too.
void collect(const Bytes& bytes, std::size_t begin, std::size_t end, const std::string& parent,
             std::vector<Place>& places) {
  static const std::set<std::string> containers{"moov", "trak", "mdia", "minf", "stbl", "edts",
                                                "dinf", "udta", "mvex", "moof", "traf", "cmov"};
  for (const Atom& atom : readAtoms(bytes, begin, end).atoms) {
    const std::string name = fourCCText(atom.type);
    places.push_back({atom.offset, atom.end(), parent + name});
    std::size_t skip = containers.count(name) != 0 ? 0 : atom.bodySize();
    if (name == "stsd" || name == "dref") skip = 8;
    if (name == "apch") skip = 78;
    collect(bytes, atom.bodyOffset() + skip, atom.end(), parent + name + "/", places);
  }
}

std::vector<Place> placesOf(const Bytes& bytes) {
  std::vector<Place> places;
  collect(bytes, 0, bytes.size(), "", places);
  return places;
}

TEST(DamagedMovie, OpensUndamaged) {
  for (const auto& [name, make] : allMovies) {
    EXPECT_FALSE(tryOut(make())) << name;
    EXPECT_GT(placesOf(make()).size(), 5U) << name;
  }
}

TEST(DamagedMovie, GivesASentenceOrOpensWhereverItIsCut) {
  for (const auto& [name, make] : allMovies) {
    const Bytes whole = make();
    for (std::size_t length = 0; length < whole.size(); ++length) {
      const auto error = tryOut(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
      const bool movieIsThere = std::string(name) == "movieFirst" ? length >= 20 + richMoov().size()
                                                                  : std::string(name) == "fragmented" && !error;
      EXPECT_EQ(!error, movieIsThere) << name << " cut at " << length;
    }
  }
}

TEST(DamagedMovie, NamesTheAtomWhoseSizeIsWrong) {
  const Bytes whole = movieLast();
  std::size_t named = 0;
  for (const Place& place : placesOf(whole)) {
    const bool onTheWay = place.path.find("moov/") == 0 && place.path.find("udta") == std::string::npos &&
                          place.path.find("apch") == std::string::npos &&
                          place.path.find("tmcd") == std::string::npos && place.path.find("dref/") == std::string::npos;
    for (const std::uint32_t size : {0U, 1U, 7U, 0xFFFFFFFFU}) {
      Bytes damaged = whole;
      write32(damaged, place.offset, size);
      const auto error = tryOut(damaged);
      if (!onTheWay) continue;
      ASSERT_TRUE(error) << place.path << " of size " << size;
      EXPECT_EQ(error->atom, place.path);
      EXPECT_EQ(error->offset, place.offset);
      ++named;
    }
  }
  EXPECT_GT(named, 100U);
}

TEST(DamagedMovie, GivesASentenceOrOpensWithAnySizeAnywhere) {
  for (const auto& [name, make] : allMovies) {
    const Bytes whole = make();
    for (const Place& place : placesOf(whole)) {
      const auto own = static_cast<std::uint32_t>(place.end - place.offset);
      for (const std::uint32_t size :
           {0U, 1U, 2U, 7U, 8U, 9U, 15U, 16U, own - 1, own + 1, own + 8, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        Bytes damaged = whole;
        write32(damaged, place.offset, size);
        tryOut(damaged);
        ASSERT_FALSE(testing::Test::HasFailure()) << name << ": " << place.path << " of size " << size;
      }
    }
  }
}

TEST(DamagedMovie, KeepsItsMetadataWhenOnlyAnExtensionIsDamaged) {
  const Bytes whole = movieLast();
  for (const Place& place : placesOf(whole)) {
    if (place.path.find("stsd/apch/") == std::string::npos) continue;
    Bytes damaged = whole;
    write32(damaged, place.offset, 7);
    EXPECT_FALSE(tryOut(damaged)) << place.path;
  }
}

TEST(DamagedMovie, SurvivesExtremeValuesInEveryField) {
  for (const auto& [name, make] : allMovies) {
    const Bytes whole = make();
    for (std::size_t at = 0; at + 4 <= whole.size(); ++at) {
      for (const std::uint32_t value : {0U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        Bytes damaged = whole;
        write32(damaged, at, value);
        tryOut(damaged);
        ASSERT_FALSE(testing::Test::HasFailure()) << name << " at " << at << " with " << value;
      }
    }
  }
}

TEST(DamagedMovie, SurvivesRandomDamage) {
  std::mt19937 random(7);
  const auto upTo = [&random](std::size_t limit) { return random() % limit; };
  for (int round = 0; round < 4000; ++round) {
    Bytes damaged = allMovies[upTo(allMovies.size())].second();
    for (std::size_t i = 1 + upTo(6); i > 0; --i) {
      const std::size_t at = upTo(damaged.size() - 8);
      switch (upTo(4)) {
        case 0:
          damaged[at] = static_cast<std::uint8_t>(random());
          break;
        case 1:
          write32(damaged, at, static_cast<std::uint32_t>(upTo(300)));
          break;
        case 2:
          std::copy(damaged.begin() + static_cast<std::ptrdiff_t>(at),
                    damaged.begin() + static_cast<std::ptrdiff_t>(at) + 8,
                    damaged.begin() + static_cast<std::ptrdiff_t>(upTo(damaged.size() - 8)));
          break;
        default:
          damaged.erase(damaged.begin() + static_cast<std::ptrdiff_t>(at),
                        damaged.begin() + static_cast<std::ptrdiff_t>(at + upTo(8)));
      }
    }
    tryOut(damaged);
    ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
  }
}

// --- large and hostile ---

TEST(HostileMovie, EndsSoonInAGigabyteOfNothing) {
  const TemporaryFile file(Bytes(8, 0));
  file.resize(std::uint64_t{1} << 30);
  EXPECT_EQ(tryOut(file.path())->reason(), "there is no movie atom");
}

TEST(HostileMovie, EndsSoonAmongMillionsOfSmallAtoms) {
  Bytes many(std::size_t{32} << 20);
  for (std::size_t at = 0; at < many.size(); at += 8) {
    write32(many, at, 8);
    write32(many, at + 4, fourCC("free"));
  }
  EXPECT_EQ(tryOut(many)->reason(), "there is no movie atom among its first atoms");
}

TEST(HostileMovie, EndsSoonAmongMillionsOfChildren) {
  Bytes many(std::size_t{32} << 20);
  for (std::size_t at = 0; at < many.size(); at += 8) write32(many, at, 8);
  write32(many, 0, static_cast<std::uint32_t>(many.size()));
  write32(many, 4, fourCC("moov"));
  EXPECT_EQ(tryOut(many)->reason(), "its parent holds too many atoms");
}

TEST(HostileMovie, OpensBesideMediaDataOfManyGigabytes) {
  Bytes head = AtomBuilder("mdat").u64(std::uint64_t{40} << 30).build();
  write32(head, 0, 1);
  const TemporaryFile file(joined({test::fileType("qt  "), richMoov(), head}));
  file.resize(20 + richMoov().size() + (std::uint64_t{40} << 30));
  EXPECT_FALSE(tryOut(file.path()));
}

TEST(HostileMovie, IsHeldBackByTheLimitOfWhatIsInflated) {
  const Bytes bomb =
      test::compressedMovie(Bytes(std::size_t{80} << 20, 0), static_cast<std::uint32_t>(maximumInflatedSize));
  EXPECT_EQ(tryOut(bomb)->reason(), "the compressed movie atom is damaged");
}

}  // namespace
}  // namespace movie
