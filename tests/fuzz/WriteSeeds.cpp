// write_fuzz_seeds FOLDER: the inputs that the fuzzers start from, as FOLDER/<target>/<what it is>.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tests/fuzz/FuzzInputs.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/scan/resume/KeptScans.h"
#include "tests/support/AtomBuilder.h"

namespace {

using movie::Bytes;
using namespace movie::test;

struct Seed {
  std::string name;
  Bytes bytes;
};

MovieSpec richSeed() {
  MovieSpec movie = richMovie();
  movie.tracks[0].edits = {{24, -1, 0x10000}, {48, 0, 0x10000}, {24, 1, 0}};
  movie.more = {
      atomOf("udta", {AtomBuilder("name").zeros(4).build(), AtomBuilder("free").zeros(32).build(), Bytes(4, 0)})};
  return movie;
}

Bytes behindMedia(const Bytes& movie, const char* brand = "qt  ") {
  return joined({typedMediaData(brand, 64), movie});
}

Bytes withEntry(const ImageEntry& entry, const char* brand = "qt  ") {
  MovieSpec movie;
  movie.tracks[0].entries = {entry.build()};
  return behindMedia(movie.build(), brand);
}

Bytes fragmented() {
  MovieSpec movie;
  movie.more = {movieExtends(1, 1, 10, 0)};
  return joined({behindMedia(movie.build(), "iso5"), richFragment().build(), AtomBuilder("mdat").zeros(30).build()});
}

Bytes wideVersions() {
  MovieSpec movie = richSeed();
  movie.version = 1;
  for (TrackSpec& track : movie.tracks) track.version = 1;
  movie.tracks[0].wideOffsets = true;
  movie.tracks[0].offsetsVersion = 1;
  return behindMedia(movie.build());
}

Bytes externalMedia() {
  MovieSpec movie;
  movie.tracks[0].dataReferences = {AtomBuilder("url ").versionAndFlags(0).code("file:///media.mov").u8(0).build(),
                                    AtomBuilder("alis").versionAndFlags(0).zeros(150).build()};
  return joined({fileType("qt  "), movie.build()});
}

Bytes sound() {
  MovieSpec movie;
  TrackSpec& track = movie.tracks[0];
  track.mediaType = "soun";
  track.entries = {AtomBuilder("sowt")
                       .zeros(6)
                       .u16(1)
                       .u16(1)
                       .zeros(6)
                       .u16(2)
                       .u16(16)
                       .zeros(4)
                       .u32(48000U << 16)
                       .u32(1)
                       .u32(2)
                       .u32(4)
                       .u32(2)
                       .build()};
  track.commonSize = 1;
  track.sampleCount = 12;
  track.durations = {{12, 1}};
  track.chunks = {{1, 12, 1}};
  return behindMedia(movie.build());
}

Bytes metadataItems() {
  MovieSpec movie;
  const Bytes locations = AtomBuilder("iloc").u32(0).u16(0x4400).u16(1).u16(1).u16(0).u16(1).u32(40).u32(8).build();
  const Bytes auxiliary = AtomBuilder("saio").u32(0).u32(1).u32(44).build();
  movie.more = {AtomBuilder("meta").u32(0).bytes(locations).bytes(AtomBuilder("free").zeros(24).build()).build(),
                auxiliary};
  return behindMedia(movie.build(), "isom");
}

/// Every item claims the most extents, none of which takes a byte of the table.
Bytes extentsOfNoBytes() {
  AtomBuilder locations("iloc");
  locations.u32(0).u16(0).u16(4000);
  for (unsigned item = 0; item < 4000; ++item) locations.u16(item).u16(0).u16(0xFFFF);
  MovieSpec movie;
  movie.more = {AtomBuilder("meta").u32(0).bytes(locations.build()).build()};
  return behindMedia(movie.build(), "isom");
}

/// A `meta` inside a `meta` inside a `meta` ...
Bytes nestedMeta(std::size_t depth) {
  Bytes nest = AtomBuilder("free").zeros(40).build();
  for (std::size_t i = 0; i < depth; ++i) nest = AtomBuilder("meta").u32(0).bytes(nest).build();
  MovieSpec movie;
  movie.more = {nest};
  return behindMedia(movie.build());
}

Bytes nestedTracks(std::size_t depth) {
  Bytes nest = AtomBuilder("free").build();
  for (std::size_t i = 0; i < depth; ++i) nest = atomOf("trak", {nest});
  MovieSpec movie;
  movie.more = {nest};
  return behindMedia(movie.build());
}

/// Small in the file, large once inflated: a table of times with a run for every sample.
Bytes inflatedTable(std::uint32_t runs) {
  MovieSpec movie;
  TrackSpec& track = movie.tracks[0];
  track.durations.clear();
  for (std::uint32_t i = 0; i < runs; ++i) track.durations.emplace_back(1, 1 + i % 2);
  track.commonSize = 10;
  track.sampleCount = runs;
  return behindMedia(compressedMovie(movie.build()));
}

std::vector<Seed> movieSeeds() {
  ImageEntry table = colouredEntry();
  table.colorTableId = 0;
  table.depth = 33;
  table.colorTable = AtomBuilder("    ").u16(1).zeros(16).build();
  table.colorTable.erase(table.colorTable.begin(), table.colorTable.begin() + 4);
  ImageEntry range;
  range.codec = "avc1";
  range.extensions = {nclxExtension(9, 16, 9, 0x80), profileExtension("rICC", Bytes(20, 7)),
                      AtomBuilder("gama").i32(0x1CCCC).zeros(3).build()};
  ImageEntry odd;
  odd.extensions = {AtomBuilder("colr").code("nclc").u16(1).build(), AtomBuilder("gama").u16(2).build(),
                    AtomBuilder("fiel").u8(1).u8(0).build()};
  odd.rest = Bytes{0, 0, 0, 200, 'g', 'a', 'm', 'a', 0};
  MovieSpec noTables;
  noTables.tracks[0].without = {"stts", "stsz", "stsc", "stco", "dinf"};
  MovieSpec two = richSeed();
  two.tracks.push_back(two.tracks[0]);
  two.tracks[2].id = 3;
  return {{"plain.mov", behindMedia(MovieSpec().build())},
          {"every colour tag, edits and a timecode track.mov", behindMedia(richSeed().build())},
          {"movie first.mov", joined({fileType("isom"), richSeed().build(), AtomBuilder("mdat").zeros(64).build()})},
          {"three tracks.mov", behindMedia(two.build())},
          {"compressed.mov", behindMedia(compressedMovie(richSeed().build()))},
          {"fragmented.mp4", fragmented()},
          {"64-bit versions and offsets.mov", wideVersions()},
          {"colour table.mov", withEntry(table)},
          {"nclx, rICC and a long gama.mp4", withEntry(range, "mp42")},
          {"cut colour atoms and a rest.mov", withEntry(odd)},
          {"no tables.mov", behindMedia(noTables.build())},
          {"media elsewhere.mov", externalMedia()},
          {"sound of one-byte samples.mov", sound()},
          {"item locations and auxiliary offsets.mp4", metadataItems()},
          {"extents of no bytes.mp4", extentsOfNoBytes()},
          {"meta in meta.mov", nestedMeta(1200)},
          {"track in track.mov", nestedTracks(1500)}};
}

Bytes behindChoices(const Bytes& choices, std::size_t count, const Bytes& file) {
  Bytes prefix = choices;
  prefix.resize(count);
  return joined({prefix, file});
}

std::string fileName(std::string name) {
  for (char& c : name) {
    if (c == ':') c = ',';
  }
  return name;
}

std::vector<Seed> saveSeeds() {
  std::vector<Seed> seeds;
  std::uint8_t number = 0;
  for (const auto& subject : saveCases(0)) {
    ++number;
    // The edit, no second one, the first track, a stop, and failures that differ from case to case.
    const Bytes choices{number,
                        number,
                        5,
                        0,
                        0,
                        number,
                        0,
                        0,
                        static_cast<std::uint8_t>(8 + number),
                        static_cast<std::uint8_t>(1 + number % 7)};
    seeds.push_back({fileName(subject.name) + ".bin", behindChoices(choices, fuzz::saveChoices, subject.file)});
  }
  seeds.push_back({"a disk that fails for good.bin",
                   behindChoices({0, 9, 5, 0, 0, 3, 0, 0, 20, 0xE0}, fuzz::saveChoices, saveCases(0)[3].file)});
  seeds.push_back({"short writes.bin", behindChoices({0, 9, 5, 0, 0, 3, 0, 0, 12, 7, 14, 7, 16, 7, 18, 15},
                                                     fuzz::saveChoices, saveCases(0)[8].file)});
  seeds.push_back({"meta in meta.bin", behindChoices({0, 9, 5}, fuzz::saveChoices, nestedMeta(1200))});
  return seeds;
}

std::vector<Seed> editSeeds() {
  std::vector<Seed> seeds;
  std::uint8_t number = 0;
  for (const Seed& seed : movieSeeds()) {
    if (seed.bytes.size() > 8000) continue;
    ++number;
    const Bytes choices{0, 0, number, number, static_cast<std::uint8_t>(number + 1), 7, 3, 0, 4, 0};
    seeds.push_back(
        {seed.name.substr(0, seed.name.rfind('.')) + ".bin", behindChoices(choices, fuzz::editChoices, seed.bytes)});
  }
  return seeds;
}

std::vector<Seed> flattenedSeeds() {
  const std::vector<std::pair<const char*, MovieParts>> layouts{
      {"movie first", {{"ftyp", "moov", "mdat", "free", "mdat"}}},
      {"chunks in a free", {{"ftyp", "wide", "mdat", "chunks", "moov"}, true}},
      {"mdat of size 0", {{"ftyp", "mdat64", "moov", "mdat0"}}},
      {"other movies", {{"ftyp", "moov", "mdat", "otherMoov"}}},
      {"junk at the end", {{"ftyp", "mdat", "moov", "junk"}}},
      {"zeros at the end", {{"ftyp", "mdat", "moov", "zeros"}}},
      {"sound first", {{"ftyp", "mdat", "skip", "moov", "uuid"}, false, "soun"}}};
  std::vector<Seed> seeds{{"every table.mov", behindMedia(richSeed().build())},
                          {"media elsewhere.mov", externalMedia()},
                          {"item locations.mp4", metadataItems()}};
  for (const auto& [name, parts] : layouts) seeds.push_back({std::string(name) + ".mov", parts.build()});
  return seeds;
}

Bytes textOf(const std::string& text) {
  return {text.begin(), text.end()};
}

/// As long as inputs are that stand in for user defaults as well.
Bytes propertyList(const std::string& body) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body + "</plist>\n";
  while (text.size() % 64 != 0) text += '\n';
  return textOf(text);
}

std::vector<Seed> propertyListSeeds() {
  std::string deep;
  for (int i = 0; i < 66; ++i) deep += "<array>";
  return {
      {"every type.plist",
       propertyList(
           "<dict><key>s</key><string>a&lt;b&#228;</string><key>t</key><true/><key>f</key><false/><key>i</key>"
           "<integer>-5</integer><key>r</key><real>0.1</real><key>d</key><date>2026-11-15T13:24:25Z</date><key>b"
           "</key><data>AAH/</data><key>a</key><array><integer>1</integer><string/></array><key>e</key><dict/></"
           "dict>")},
      {"number.plist", propertyList("<integer>9223372036854775807</integer>")},
      {"beyond a signed number.plist",
       propertyList("<dict><key>a</key><integer>18446744073709551615</integer></dict>")},
      {"hexadecimal.plist", propertyList("<array><integer>0x7f</integer><integer>-0x1</integer></array>")},
      {"no number.plist", propertyList("<array><real>nan</real><real>-inf</real><real>1e999</real></array>")},
      {"carriage return.plist", propertyList("<dict><key>a&#13;b</key><string>x&#13;&#10;y</string></dict>")},
      {"a key twice.plist",
       propertyList(
           "<dict><key>a</key><true/><key>a</key><false/><key>lastSourceFile</key><string>/a</string></dict>")},
      {"cdata and a comment.plist", propertyList("<!-- c --><string><![CDATA[<&>]]> \xE2\x82\xAC</string>")},
      {"nested too deep.plist", propertyList(deep)},
      {"entities.plist",
       textOf("<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;&a;\">]><plist><string>&b;</string></plist>")},
      {"early date.plist",
       propertyList("<array><date>1969-04-24T22:13:20Z</date><date>9999-99-99T99:99:99Z</date></array>")},
      {"no property list.plist", textOf("{\"a\": [1, 2]}")}};
}

std::vector<Seed> resumeSeeds() {
  const Bytes mark(scan::resumeMark.begin(), scan::resumeMark.end());
  const Bytes begun = joined({mark, scan::subjectGroup(scan::test::keptSubject())});
  const Bytes placed = joined({begun, scan::beginningGroup(scan::test::keptBeginning())});
  const Bytes frames =
      joined({placed, scan::framesGroup(scan::test::keptFrames(0, 12), {}, scan::test::keptStanding(12))});
  const scan::TimeLine further{1, 99};
  const Bytes more =
      joined({frames, scan::framesGroup(scan::test::keptFrames(12, 20), {&further, 1}, scan::test::keptStanding(20))});
  return {{"begun", begun}, {"placed", placed}, {"frames", frames}, {"frames on another line", more}};
}

void write(const std::filesystem::path& folder, const std::vector<Seed>& seeds) {
  std::filesystem::create_directories(folder);
  for (const Seed& seed : seeds) {
    std::ofstream out(folder / seed.name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(seed.bytes.data()), static_cast<std::streamsize>(seed.bytes.size()));
    std::cout << seed.bytes.size() << ' ' << (folder / seed.name).string() << '\n';
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: write_fuzz_seeds FOLDER\n";
    return 64;
  }
  const std::filesystem::path folder = arguments[1];
  std::vector<Seed> movies = movieSeeds();
  movies.push_back({"large once inflated.mov", inflatedTable(20'000)});
  for (const auto& subject : saveCases(0)) {
    if (subject.name.rfind("leftover", 0) == 0) movies.push_back({fileName(subject.name) + ".mov", subject.file});
  }
  write(folder / "atoms", movies);
  write(folder / "edit", editSeeds());
  write(folder / "save", saveSeeds());
  write(folder / "flattened", flattenedSeeds());
  write(folder / "property_lists", propertyListSeeds());
  write(folder / "resume", resumeSeeds());
  return 0;
}
