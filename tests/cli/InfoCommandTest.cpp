#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/Commands.h"
#include "movie/render/IccProfile.h"
#include "tests/support/AtomBuilder.h"

namespace cli {
namespace {

using movie::Bytes;
using namespace movie::test;
using testing::HasSubstr;

Bytes fileOf(const TrackSpec& track) {
  MovieSpec movie;
  movie.timeScale = 1000;
  movie.duration = 125;
  movie.tracks = {track};
  return movie::test::joined({movie::test::typedMediaData("qt  ", 30), movie.build()});
}

Bytes taggedMovie() {
  ImageEntry entry;
  entry.extensions = {movie::test::gamaExtension(144179), movie::test::nclcExtension(9, 16, 9),
                      movie::test::profileExtension("prof", movie::sRGBProfile())};
  TrackSpec track;
  track.timeScale = 24000;
  track.durations = {{3, 1001}};
  track.mediaDuration = 3003;
  track.entries = {entry.build(), ImageEntry().build()};
  return fileOf(track);
}

Bytes untaggedMovie() {
  return fileOf(TrackSpec{});
}

Bytes soundMovie() {
  TrackSpec track;
  track.mediaType = "soun";
  track.entries = {};
  return fileOf(track);
}

CommandResult textOf(const std::vector<std::string>& files) {
  return runInfoCommand({files, OutputForm::Text});
}
nlohmann::ordered_json jsonOf(const std::vector<std::string>& files) {
  return nlohmann::ordered_json::parse(runInfoCommand({files, OutputForm::Json}).out);
}

TEST(InfoCommand, ShowsEachFileAsALittleTable) {
  const TemporaryFile tagged(taggedMovie()), untagged(untaggedMovie());
  const CommandResult result = textOf({tagged.path(), untagged.path()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  const std::string profile = movie::profileDescription(movie::sRGBProfile());
  EXPECT_EQ(result.out, tagged.path() +
                            "\n"
                            "  gamma               2.2 (144179/65536)\n"
                            "  color               9-16-9 (primaries BT.2020, transfer function PQ, matrix BT.2020)\n"
                            "  profile             " +
                            profile + " (" + std::to_string(movie::sRGBProfile().size()) +
                            " bytes)\n"
                            "  size                1920 x 1080\n"
                            "  codec               apch\n"
                            "  image descriptions  2\n"
                            "  duration            0.125 s\n"
                            "  frame rate          23.976 fps\n"
                            "\n" +
                            untagged.path() +
                            "\n"
                            "  gamma               none\n"
                            "  color               none\n"
                            "  profile             none\n"
                            "  size                1920 x 1080\n"
                            "  codec               apch\n"
                            "  image descriptions  1\n"
                            "  duration            0.125 s\n"
                            "  frame rate          25 fps\n");
}

TEST(InfoCommand, SaysWhenThereIsNoVideo) {
  const TemporaryFile sound(soundMovie());
  const CommandResult result = textOf({sound.path()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, sound.path() + "\n  video               no video track\n  duration            0.125 s\n");
  EXPECT_EQ(jsonOf({sound.path()})[0].dump(),
            "{\"path\":\"" + sound.path() +
                "\",\"size\":null,\"codec\":null,\"gamma\":null,\"gammaFixed\":null,\"color\":null,\"profile\":null,"
                "\"imageDescriptions\":0}");
}

TEST(InfoCommand, GivesOneObjectAFileInTheirOrder) {
  const TemporaryFile tagged(taggedMovie()), untagged(untaggedMovie());
  const auto json = jsonOf({untagged.path(), tagged.path()});
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(json[0].dump(),
            "{\"path\":\"" + untagged.path() +
                "\",\"size\":[1920,1080],\"codec\":\"apch\",\"gamma\":null,\"gammaFixed\":null,\"color\":null,"
                "\"profile\":null,\"imageDescriptions\":1}");
  auto side = json[1];
  EXPECT_EQ(side["profile"]["bytes"], movie::sRGBProfile().size());
  EXPECT_EQ(side["profile"]["description"], movie::profileDescription(movie::sRGBProfile()));
  EXPECT_THAT(side["profile"]["sha256"].get<std::string>(), testing::MatchesRegex("[0-9a-f]+"));
  EXPECT_EQ(side["profile"]["sha256"].get<std::string>().size(), 64U);
  side.erase("profile");
  EXPECT_EQ(side.dump(), "{\"path\":\"" + tagged.path() +
                             "\",\"size\":[1920,1080],\"codec\":\"apch\",\"gamma\":2.2,\"gammaFixed\":144179,"
                             "\"color\":{\"type\":\"nclc\",\"primaries\":9,\"transferFunction\":16,\"matrix\":9},"
                             "\"imageDescriptions\":2}");
}

TEST(InfoCommand, HashesTheProfilesBytes) {
  ImageEntry entry;
  const Bytes abc{'a', 'b', 'c'};
  entry.extensions = {movie::test::profileExtension("prof", abc)};
  TrackSpec track;
  track.entries = {entry.build()};
  const TemporaryFile file(fileOf(track));
  EXPECT_EQ(
      jsonOf({file.path()})[0]["profile"].dump(),
      R"({"bytes":3,"sha256":"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad","description":""})");
  EXPECT_THAT(textOf({file.path()}).out, HasSubstr("no description (3 bytes)"));
}

TEST(InfoCommand, PutsAnErrorInThePlaceOfAFileThatFails) {
  const TemporaryFile good(untaggedMovie());
  const std::string bad = "/nonexistent/a.mov";
  const CommandResult json = runInfoCommand({{good.path(), bad, good.path()}, OutputForm::Json});
  EXPECT_EQ(json.status, 2);
  const auto array = nlohmann::ordered_json::parse(json.out);
  ASSERT_EQ(array.size(), 3U);
  EXPECT_EQ(array[0], array[2]);
  EXPECT_EQ(array[1]["error"]["path"], bad);
  EXPECT_EQ("lumacheck: " + array[1]["error"]["message"].get<std::string>() + "\n", json.err);

  const CommandResult text = textOf({bad, good.path()});
  EXPECT_EQ(text.status, 2);
  EXPECT_EQ(text.out, textOf({good.path()}).out);
}

}  // namespace
}  // namespace cli
