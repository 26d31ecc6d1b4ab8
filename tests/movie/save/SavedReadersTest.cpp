// What readers that share no code with the program make of saved movies: ffprobe, MediaInfo, ExifTool and GStreamer's
// QuickTime demuxer. Each tells of a saved movie what it told before, but for the colours, which it shows as saved.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "movie/atoms/ImageDescription.h"
#include "movie/save/MetadataSave.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/support/MovieFixture.h"

namespace movie {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using test::contentOf;
using test::openedMovie;
using test::SaveCase;
using test::TemporaryFolder;

constexpr std::int32_t newGamma = 0x23333;                     // 2.2
constexpr NclcParameters newColors{fourCC("nclc"), 9, 16, 9};  // BT.2020, PQ

/// A movie before and after a save.
struct Specimen {
  std::string name, before, after;
  bool hasLeftovers = false;  ///< of an interrupted save, before
  bool isColored = false;     ///< saved with newGamma and newColors
  double gamma = 0;           ///< that it has after the save; 0 for none
  bool isTerminated = false;  ///< the saved description ends in four zero bytes
};

/// What a reader tells of one file.
struct Reading {
  Json facts;                        ///< but for colours, and for where in the file what is not media data lies
  std::vector<std::string> colors;   ///< as the reader words them
  std::set<std::string> complaints;  ///< errors and warnings
};

using Reader = std::function<std::vector<Reading>(const std::vector<std::string>& paths)>;

std::string quoted(const std::string& path) {
  return " '" + path + "'";
}

std::string allQuoted(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) text += quoted(path);
  return text;
}

/// Lines without what differs from run to run.
std::set<std::string> linesOf(const std::string& text, const std::string& path) {
  static const std::regex address("0x[0-9a-f]+");
  std::set<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    line = std::regex_replace(line, address, "0x");
    if (const auto at = line.find(path); at != std::string::npos) line.replace(at, path.size(), "FILE");
    if (!line.empty()) lines.insert(line);
  }
  return lines;
}

/// Takes the members out of an object whose name `isColor` or `isElsewhere` knows; the first kind is kept aside.
void sort(Json& object, Reading& reading, const std::function<bool(const std::string&)>& isColor,
          const std::function<bool(const std::string&)>& isElsewhere) {
  for (auto member = object.begin(); member != object.end();) {
    const bool color = isColor(member.key());
    if (color) reading.colors.push_back(member.key() + "=" + member->dump());
    member = color || isElsewhere(member.key()) ? object.erase(member) : std::next(member);
  }
}

bool contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

Reading probed(const std::string& path) {
  const std::string split = "\n---\n";
  const std::string output =
      test::outputOf("(ffprobe -v warning -show_streams -show_packets -show_data_hash crc32 -of json" + quoted(path) +
                     " 3>&1 1>&2 2>&3 3>&-) 2>\"$TMPDIR/out\"; echo; echo ---; cat \"$TMPDIR/out\"");
  const std::size_t at = output.find(split);
  Reading reading{Json::parse(output.substr(at + split.size())), {}, linesOf(output.substr(0, at), path)};
  for (Json& stream : reading.facts["streams"]) {
    sort(
        stream, reading, [](const std::string& key) { return contains(key, "color_"); },
        [](const std::string&) { return false; });
  }
  return reading;
}

std::vector<Reading> ffprobe(const std::vector<std::string>& paths) {
  std::vector<Reading> readings;
  for (const std::string& path : paths) readings.push_back(probed(path));
  return readings;
}

std::vector<Reading> mediainfo(const std::vector<std::string>& paths) {
  static const std::set<std::string> elsewhere{"FileSize",       "File_Modified_Date", "File_Modified_Date_Local",
                                               "FileExtension",  "HeaderSize",         "DataSize",
                                               "OverallBitRate", "FooterSize",         "IsStreamable"};
  const auto isColor = [](const std::string& key) {
    return contains(key, "colour_") || contains(key, "transfer_char") || contains(key, "matrix_co") || key == "Gamma" ||
           key == "ColorSpace";
  };
  const auto isElsewhere = [](const std::string& key) { return elsewhere.count(key) != 0; };
  std::vector<Reading> readings;
  for (Json& file : Json::parse(test::outputOf("mediainfo --Output=JSON" + allQuoted(paths)))) {
    Reading& reading = readings.emplace_back();
    reading.facts = std::move(file["media"]["track"]);
    for (Json& track : reading.facts) {
      if (track["@type"] == "General") track.erase("StreamSize");
      sort(track, reading, isColor, isElsewhere);
      if (!track.contains("extra")) continue;
      for (const auto& [key, value] : track["extra"].items()) {
        if (contains(key, "IsTruncated") || contains(key, "Conformance")) reading.complaints.insert(key + value.dump());
      }
      sort(track["extra"], reading, isColor, [](const std::string& key) { return contains(key, "IsTruncated"); });
      if (track["extra"].empty()) track.erase("extra");
    }
  }
  return readings;
}

std::vector<Reading> exiftool(const std::vector<std::string>& paths) {
  const auto isColor = [](const std::string& key) {
    return contains(key, ":Color") || contains(key, ":Gamma") || contains(key, ":TransferChar") ||
           contains(key, ":MatrixCo") || contains(key, "ICC") || contains(key, ":VideoFullRange") ||
           contains(key, ":Profile");
  };
  const auto isElsewhere = [](const std::string& key) {
    return contains(key, "System:") || key == "SourceFile" || contains(key, ":Free") || contains(key, ":Skip") ||
           key == "QuickTime:MediaData" || contains(key, "ExifTool:");
  };
  std::vector<Reading> readings;
  // Ends with an error when one of the files has one, which is told of that file too.
  for (Json& file :
       Json::parse(test::outputOf("{ exiftool -q -j -G1 -a -s -validate -all" + allQuoted(paths) + "; true; }"))) {
    Reading& reading = readings.emplace_back();
    for (const auto& [key, value] : file.items()) {
      const bool complains = contains(key, "Warning") || contains(key, "Error") || contains(key, ":Validate");
      if (complains && value != "OK") reading.complaints.insert(key + " " + value.dump());
    }
    sort(file, reading, isColor, isElsewhere);
    reading.facts = std::move(file);
  }
  return readings;
}

/// All of a movie's picture and sound tracks, each into a sink that tells of every buffer.
std::string pipeline(const std::string& path) {
  std::string text = "timeout 20 gst-launch-1.0 -v filesrc location=" + quoted(path) + " ! qtdemux name=d";
  int pictures = 0, sounds = 0;
  const auto movie = openedMovie(path);
  for (const TrackInfo& track : movie->tracks()) {
    const bool picture = track.mediaType == videoMedia, sound = track.mediaType == fourCC("soun");
    if (!picture && !sound) continue;
    const std::string pad = picture ? "video_" + std::to_string(pictures++) : "audio_" + std::to_string(sounds++);
    text += " d." + pad + " ! fakesink name=" + pad + " silent=false sync=false async=false";
  }
  return text;
}

Reading demuxed(const std::string& path) {
  static const std::regex color("colorimetry=\\(string\\)([^,;\" ]*)"), buffer("\\((\\d+ bytes, .*)\\) 0x");
  static const std::regex capsOf("(video_\\d|audio_\\d)\\.GstPad:sink: caps = (.*)");
  Reading reading;
  std::istringstream output(test::outputOf("{ " + pipeline(path) + " || echo ERROR: it failed; }"));
  std::smatch match;
  for (std::string line; std::getline(output, line);) {
    if (contains(line, "ERROR") || contains(line, "WARN")) reading.complaints.merge(linesOf(line, path));
    if (std::regex_search(line, match, buffer)) reading.facts["buffers"].push_back(match[1].str());
    if (!std::regex_search(line, match, capsOf)) continue;
    std::string caps = match[2];
    if (std::smatch found; std::regex_search(caps, found, color)) {
      reading.colors.push_back(found[1]);
      caps.erase(static_cast<std::size_t>(found.position()) - 2, static_cast<std::size_t>(found.length()) + 2);
    }
    reading.facts[match[1].str()] = caps;
  }
  if (reading.facts.contains("buffers")) std::sort(reading.facts["buffers"].begin(), reading.facts["buffers"].end());
  return reading;
}

std::vector<Reading> gstreamer(const std::vector<std::string>& paths) {
  std::vector<Reading> readings;
  for (const std::string& path : paths) readings.push_back(demuxed(path));
  return readings;
}

// --- the movies ---

void saveInto(Specimen& specimen, const std::vector<SampleDescriptionEdit>& edits) {
  fs::copy_file(specimen.before, specimen.after);
  const auto outcome = saveMetadata(*openedMovie(specimen.after), edits);
  ASSERT_TRUE(outcome) << specimen.name << ": " << outcome.error().message();
  const auto saved = openedMovie(specimen.after);
  const ImageDescription description(saved->tracks()[edits[0].track].sampleDescriptions[0]);
  specimen.gamma = description.gamma().value_or(0) / 65536.0;
  const Bytes& bytes = description.bytes();
  specimen.isTerminated = read32(bytes, bytes.size() - 4) == 0;
}

void addCases(const TemporaryFolder& folder, std::vector<Specimen>& specimens) {
  for (const SaveCase& subject : test::saveCases(0)) {
    const std::string number = std::to_string(specimens.size());
    Specimen& specimen = specimens.emplace_back();
    specimen.name = subject.name;
    specimen.before = folder.add("before-" + number + ".mov", subject.file);
    specimen.after = folder.path("after-" + number + ".mov");
    specimen.hasLeftovers = contains(subject.name, "leftover");
    saveInto(specimen, subject.edits);
  }
}

std::vector<std::string> encodedMovies() {
  std::vector<std::string> movies = test::realMovies();
  const auto add = [&](const char* name, std::vector<std::string> coding) {
    std::vector<std::string> all{"-f", "lavfi", "-i", "testsrc2=s=192x108:d=1:r=25", "-f", "lavfi", "-i", "sine=d=1"};
    all.insert(all.end(), coding.begin(), coding.end());
    movies.push_back(test::fixtureMovie(name, all));
  };
  add("read.mov", {"-c:v", "prores", "-c:a", "pcm_s16le", "-timecode", "01:00:00:00"});
  add("read.mov", {"-c:v", "mjpeg", "-c:a", "pcm_s24be", "-movflags", "+faststart"});
  add("read.mov", {"-c:v", "dnxhd", "-s", "1920x1080", "-t", "0.2", "-pix_fmt", "yuv422p", "-b:v", "120M", "-an"});
  add("read.mp4", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-bf", "2", "-c:a", "aac", "-movflags", "+faststart"});
  add("read.mp4", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "aac", "-metadata", "title=x"});
  add("read.mp4", {"-c:v", "mpeg4", "-moov_size", "20000", "-an"});
  return movies;
}

/// Those that can be saved in place.
void addEncoded(const TemporaryFolder& folder, std::vector<Specimen>& specimens) {
  for (const std::string& path : encodedMovies()) {
    const auto movie = MovieFile::open(path);
    if (!movie || (*movie)->tracks().empty()) continue;
    const auto& tracks = (*movie)->tracks();
    const auto track = std::find_if(tracks.begin(), tracks.end(), [](const TrackInfo& each) {
      return each.mediaType == videoMedia && !each.sampleDescriptions.empty();
    });
    if (track == tracks.end()) continue;
    ImageDescription description(track->sampleDescriptions[0]);
    const auto flavour = (*movie)->isQuickTime() ? ColorAtomFlavour::Nclc : ColorAtomFlavour::NclxVideoRange;
    ASSERT_EQ(description.setGamma(newGamma), noErr);
    ASSERT_EQ(description.setNclc(newColors, flavour), noErr);
    const std::string number = std::to_string(specimens.size()), extension = fs::path(path).extension().string();
    Specimen specimen{path, folder.path("before-" + number + extension), folder.path("after-" + number + extension)};
    fs::copy_file(path, specimen.before);
    fs::permissions(specimen.before, fs::perms::owner_all);
    const std::vector<SampleDescriptionEdit> edits{
        {static_cast<std::size_t>(track - tracks.begin()), 0, description.bytes()}};
    if (!canUpdate(*openedMovie(specimen.before), edits)) continue;
    specimen.isColored = true;
    saveInto(specimen, edits);
    specimens.push_back(specimen);
  }
}

struct ReaderRow {
  const char* name;
  Reader read;
  std::vector<std::string> colors;  ///< what it shows for newColors
  std::size_t least;                ///< movies of which it shows them
  bool (*knowsGammaOf)(const Specimen&);
};

bool never(const Specimen&) {
  return false;
}
bool always(const Specimen&) {
  return true;
}
/// ExifTool finds no atom at all in a description that ends in zeros, whoever wrote it.
bool unlessTerminated(const Specimen& specimen) {
  return !specimen.isTerminated;
}

const std::vector<ReaderRow> readers{
    {"ffprobe",
     ffprobe,
     {"color_primaries=\"bt2020\"", "color_transfer=\"smpte2084\"", "color_space=\"bt2020nc\""},
     3,
     never},
    {"mediainfo",
     mediainfo,
     {"colour_primaries=\"BT.2020\"", "transfer_characteristics=\"PQ\"",
      "matrix_coefficients=\"BT.2020 non-constant\""},
     6,
     always},
    {"exiftool",
     exiftool,
     {"ColorPrimaries=\"BT.2020, BT.2100\"", "TransferCharacteristics=\"SMPTE ST 2084, ITU BT.2100 PQ\"",
      "MatrixCoefficients=\"BT.2020 non-constant luminance, BT.2100 YCbCr\""},
     5,
     unlessTerminated},
    {"gstreamer", gstreamer, {"bt2100-pq"}, 4, never}};

bool shows(const Reading& reading, const std::string& text) {
  return std::any_of(reading.colors.begin(), reading.colors.end(),
                     [&](const std::string& color) { return contains(color, text.c_str()); });
}

bool showsGamma(const Reading& reading, double gamma) {
  return std::any_of(reading.colors.begin(), reading.colors.end(), [&](const std::string& color) {
    const std::size_t at = color.find("Gamma=");
    if (at == std::string::npos) return false;
    const std::string digits = color.substr(color.find_first_of("0123456789", at));
    return std::abs(std::stod(digits) - gamma) < 0.002;
  });
}

class SavedReaders : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    specimens_ = new std::vector<Specimen>;
    ::setenv("TMPDIR", folder_->path("").c_str(), 1);
    ::setenv("GST_REGISTRY", folder_->path("registry").c_str(), 1);
    addCases(*folder_, *specimens_);
    addEncoded(*folder_, *specimens_);
  }
  static void TearDownTestSuite() {
    delete specimens_;
    delete folder_;
  }

  static void expectAsBefore(const ReaderRow& reader);

  static inline TemporaryFolder* folder_ = nullptr;
  static inline std::vector<Specimen>* specimens_ = nullptr;
};

void SavedReaders::expectAsBefore(const ReaderRow& reader) {
  std::vector<std::string> paths;
  for (const Specimen& specimen : *specimens_) {
    paths.push_back(specimen.before);
    paths.push_back(specimen.after);
  }
  const std::vector<Reading> readings = reader.read(paths);
  ASSERT_EQ(readings.size(), paths.size());
  std::size_t colored = 0, read = 0;
  for (std::size_t i = 0; i < specimens_->size(); ++i) {
    const Specimen& specimen = (*specimens_)[i];
    SCOPED_TRACE(specimen.name);
    const Reading &before = readings[2 * i], &after = readings[2 * i + 1];
    EXPECT_TRUE(before.facts.empty() || !after.facts.empty());
    if (!after.facts.empty()) ++read;
    if (!specimen.hasLeftovers) {
      EXPECT_EQ(before.facts, after.facts) << Json::diff(before.facts, after.facts).dump(1);
    }
    // Of a movie that a reader never opened it complains now in one way, now in another.
    for (const std::string& complaint : before.facts.empty() ? std::set<std::string>() : after.complaints) {
      EXPECT_EQ(before.complaints.count(complaint), 1U) << complaint;
    }
    if (specimen.gamma != 0 && reader.knowsGammaOf(specimen)) {
      EXPECT_TRUE(showsGamma(after, specimen.gamma)) << specimen.gamma;
    }
    if (!specimen.isColored) continue;
    const auto shown = [&](const std::string& color) { return shows(after, color); };
    if (std::all_of(reader.colors.begin(), reader.colors.end(), shown)) ++colored;
  }
  EXPECT_GE(colored, reader.least);
  EXPECT_GE(read, 32U);
  std::printf("%s: %zu movies, the new colours shown of %zu\n", reader.name, specimens_->size(), colored);
}

TEST_F(SavedReaders, FfprobeTellsOfASavedMovieWhatItToldBefore) {
  expectAsBefore(readers[0]);
}

TEST_F(SavedReaders, MediaInfoTellsOfASavedMovieWhatItToldBefore) {
  expectAsBefore(readers[1]);
}

TEST_F(SavedReaders, ExifToolTellsOfASavedMovieWhatItToldBefore) {
  expectAsBefore(readers[2]);
}

TEST_F(SavedReaders, GStreamerTellsOfASavedMovieWhatItToldBefore) {
  expectAsBefore(readers[3]);
}

TEST_F(SavedReaders, AreGivenMoviesOfTheWorldToo) {
  const std::vector<std::string> movies = test::realMovies();
  if (movies.empty()) GTEST_SKIP() << test::whyNoRealMovies();
  const auto isGiven = [](const std::string& movie) {
    return std::any_of(specimens_->begin(), specimens_->end(),
                       [&](const Specimen& each) { return each.name == movie; });
  };
  EXPECT_TRUE(std::any_of(movies.begin(), movies.end(), isGiven));
}

}  // namespace
}  // namespace movie
