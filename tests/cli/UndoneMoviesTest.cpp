#include <filesystem>
#include <functional>
#include <iostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/RunProgram.h"
#include "tests/cli/ScanFixture.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

// Exports of every kind that a scan undoes, and what ffmpeg makes of what it was told.

namespace cli {
namespace {

using namespace test;
using testing::HasSubstr;

/// An export made by a filter, and what the filter that is told leaves of it.
struct MendedRow {
  const char* name;
  const char* filter;
  const char* cause;
};

class MendedMovies : public testing::TestWithParam<MendedRow> {};

TEST_P(MendedMovies, AreTheSameOnceTheFilterWasApplied) {
  const auto& [name, filter, cause] = GetParam();
  const std::string dest = scanExport(std::string("scan-mendable-") + name, filter);
  const PrintedJson before = scanned({scanMaster(), dest, "--filter"});
  EXPECT_EQ(before["finding"]["causes"][0]["cause"], cause);
  ASSERT_TRUE(before["filter"]["text"].is_string()) << before["filter"];
  const std::string undone = before["filter"]["text"].text();
  // By another name for every other filter: movies of the tests are kept.
  const std::string mended =
      fixtureMovies(dest,
                    {{"scan-mended-" + std::string(name) + std::to_string(std::hash<std::string>()(undone)) + ".mp4",
                      {"-vf", undone, "-pix_fmt", "yuv420p", "-c:v", "libx264", "-preset", "ultrafast", "-crf", "14"}}})
          .front();
  const PrintedJson after = scanned({scanMaster(), mended});
  const double left = after["finding"]["difference"].number();
  std::cout << name << ": " << before["finding"]["difference"] << " codes, then " << left << ", by " << undone << "\n";
  EXPECT_EQ(after["finding"]["causes"][0]["cause"], "same");
  EXPECT_LT(left, 1.5) << "codes of 8 bits, which the samples were cut to twice on the way";
}

constexpr const char* rgbPower =
    "scale=in_color_matrix=bt601:flags=accurate_rnd+full_chroma_int,format=gbrp,"
    "lutrgb=r='255*pow(val/255,0.817)':g='255*pow(val/255,0.817)':b='255*pow(val/255,0.817)',"
    "scale=out_color_matrix=bt601:out_range=tv:flags=accurate_rnd+full_chroma_int,format=yuv420p";
constexpr const char *compressed = "lutyuv=y='val*219/255+16':u='128+(val-128)*224/255':v='128+(val-128)*224/255'",
                     *expanded = "lutyuv=y='(val-16)*255/219':u='128+(val-128)*255/224':v='128+(val-128)*255/224'",
                     *dimmed = "lutyuv=y='16+(val-16)*0.85+5'";
const auto mendedRows =
    testing::Values(MendedRow{"luma", scanPower, "power"}, MendedRow{"rgb", rgbPower, "power"},
                    MendedRow{"compressed", compressed, "range"}, MendedRow{"expanded", expanded, "range"},
                    MendedRow{"gain", dimmed, "gain"}, MendedRow{"half", scanHalfPower, "power"});
constexpr auto nameOfRow = [](const auto& row) { return std::string(row.param.name); };
INSTANTIATE_TEST_SUITE_P(Rows, MendedMovies, mendedRows, nameOfRow);

/// The master with colours as films have them: once luma goes down without them, hardly any lie beyond R'G'B'.
std::string calmMaster() {
  return fixtureMovies(scanMaster(), {{"scan-calm.mp4",
                                       {"-vf", "hue=s=0.45", "-c:v", "libx264", "-preset", "ultrafast", "-crf", "16"}}})
      .front();
}

/// What ffmpeg makes of a movie by a table, decoded and encoded as it is marked. By another name for every other table:
/// movies of the tests are kept.
std::string throughTable(const std::string& movie, const std::string& table) {
  const std::string care = ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp";
  const std::string text = movie::test::textOf(table);
  const std::string lookup = text.find("LUT_1D_SIZE") == std::string::npos ? "lut3d=" : "lut1d=";
  const std::string filter = "scale=in_color_matrix=bt601:in_range=tv" + care + ",format=gbrp16," + lookup + table +
                             ",scale=out_color_matrix=bt601:out_range=tv" + care + ",format=yuv420p";
  const std::string name = "scan-looked-up-" + std::to_string(std::hash<std::string>()(text)) + ".mp4";
  return fixtureMovies(movie, {{name, {"-vf", filter, "-c:v", "libx264", "-preset", "ultrafast", "-crf", "14"}}})
      .front();
}

/// Where a table of a movie goes: the same place in every run, as that of what is made by it.
std::string tableBeside(const std::string& movie) {
  return std::filesystem::path(movie).replace_extension(".cube");
}

struct TableRow {
  const char* name;
  const char* filter;
  const char* cause;
  int dimensions;
};

class TabledMovies : public testing::TestWithParam<TableRow> {};

TEST_P(TabledMovies, AreTheSameOnceTheTableWasApplied) {
  const auto& [name, filter, cause, dimensions] = GetParam();
  const std::string dest = scanExport(std::string("scan-tabled-") + name, filter, calmMaster());
  const std::string table = tableBeside(dest);
  const PrintedJson before = scanned({calmMaster(), dest, "--lut", table});
  EXPECT_EQ(before["finding"]["causes"][0]["cause"], cause);
  const PrintedJson lut = before["lut"];
  ASSERT_TRUE(lut["why"].is_null()) << lut;
  EXPECT_EQ(lut["dimensions"], dimensions);
  const PrintedJson after = scanned({calmMaster(), throughTable(dest, table)});
  const double left = after["finding"]["difference"].number();
  std::cout << name << ": " << before["finding"]["difference"] << " codes, then " << left << " (" << lut << ")\n";
  EXPECT_EQ(after["finding"]["causes"][0]["cause"], "same");
  EXPECT_LT(left, 1.0) << "codes of 8 bits";
  EXPECT_NEAR(left, lut["difference"]["after"].number(), 0.3) << "what was told";
}

constexpr const char *takenFor709 = "scale=in_color_matrix=bt601:out_color_matrix=bt709:flags=bicubic+accurate_rnd",
                     *takenFor601 = "scale=in_color_matrix=bt709:out_color_matrix=bt601:flags=bicubic+accurate_rnd";
INSTANTIATE_TEST_SUITE_P(Rows, TabledMovies,
                         testing::Values(TableRow{"luma", scanPower, "power", 3}, TableRow{"rgb", rgbPower, "power", 1},
                                         TableRow{"compressed", compressed, "range", 3},
                                         TableRow{"expanded", expanded, "range", 3},
                                         TableRow{"gain", dimmed, "gain", 3},
                                         TableRow{"matrix601", takenFor709, "matrix", 3},
                                         TableRow{"matrix709", takenFor601, "matrix", 3}),
                         nameOfRow);

TEST(TableOfAMovie, TellsWhatIsCutOffBeforeIt) {
  const std::string dest = scanExport("scan-mendable-luma", scanPower);
  const std::string table = tableBeside(dest);
  const PrintedJson lut = scanned({scanMaster(), dest, "--lut", table})["lut"];
  EXPECT_EQ(lut["cutsOff"], true) << "of colours as no film has them";
  const double told = lut["difference"]["after"].number();
  EXPECT_GT(told, 2);
  EXPECT_NEAR(scanned({scanMaster(), throughTable(dest, table)})["finding"]["difference"].number(), told, 0.5);
  EXPECT_THAT(runLumacheck({"scan", scanMaster(), dest, "--lut", table}).out,
              HasSubstr(": colors of the destination that lie beyond black and white are cut off before a table"));
}

/// A proof is of the same kinds as a filter.
class ProvenMovies : public testing::TestWithParam<MendedRow> {};

TEST_P(ProvenMovies, AreTheSameInTheProof) {
  const auto& [name, filter, cause] = GetParam();
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("proof.mov");
  const std::string dest = scanExport(std::string("scan-mendable-") + name, filter);
  const PrintedJson json = scanned({scanMaster(), dest, "--proof", path});
  EXPECT_EQ(json["finding"]["causes"][0]["cause"], cause);
  const PrintedJson proof = json["proof"];
  ASSERT_EQ(proof["path"], path) << proof;
  std::cout << name << ": " << proof["difference"] << "\n";
  EXPECT_EQ(proof["causes"][0]["cause"], "same");
  EXPECT_LT(proof["difference"]["after"].number(), 1.0);
  EXPECT_NEAR(proof["difference"]["before"].number(), json["finding"]["difference"].number(), 1.0);
  const double first = proof["from"]["seconds"].number(), end = proof["to"]["seconds"].number();
  EXPECT_NEAR(end - first, std::string(name) == "half" ? 5 : 10, 0.1);
}

INSTANTIATE_TEST_SUITE_P(Rows, ProvenMovies, mendedRows, nameOfRow);

}  // namespace
}  // namespace cli
