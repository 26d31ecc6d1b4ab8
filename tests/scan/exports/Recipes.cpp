#include "tests/scan/exports/Recipes.h"

#include <cstdio>

namespace scan::test {
namespace {

using diagnosis::CauseKind;
using diagnosis::Region;
using Arguments = std::vector<std::string>;

constexpr double length = masterSeconds;

std::string text(double value) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.6f", value);
  return buffer;
}

Arguments x264(const std::string& filters, int crf = 20) {
  Arguments arguments;
  if (!filters.empty()) arguments = {"-vf", filters};
  for (const std::string& each :
       {std::string("-c:v"), std::string("libx264"), std::string("-preset"), std::string("veryfast"),
        std::string("-crf"), std::to_string(crf), std::string("-an")}) {
    arguments.push_back(each);
  }
  return arguments;
}

Arguments with(Arguments arguments, const Arguments& more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

/// Filters that make pictures of their own say nothing of colours, and what they give out then neither.
const Arguments bt709{"-colorspace", "bt709", "-color_primaries", "bt709", "-color_trc", "bt709", "-color_range", "tv"};

ScanTruth whole(double rate = 1, double seconds = length) {
  return {.pieces = {{0, seconds, rate, 0}}, .tones = {{0, seconds, 1}}};
}

ScanTruth pieces(const std::vector<TruePiece>& given) {
  ScanTruth truth{.pieces = given};
  for (const TruePiece& piece : given) truth.tones.push_back({piece.from, piece.to, 1});
  return truth;
}

ScanTruth raised(ScanTruth truth, double exponent) {
  for (TrueTone& tone : truth.tones) tone.exponent = exponent;
  truth.causes = {CauseKind::Power};
  return truth;
}

ScanTruth caused(ScanTruth truth, CauseKind cause) {
  truth.tones.clear();
  truth.causes = {cause};
  return truth;
}

ScanTruth seeing(ScanTruth truth, const Region& part) {
  truth.part = part;
  return truth;
}

/// From a time of the export on, or all along.
std::string power(double exponent, double from = -1, double to = 1e6) {
  std::string filter = "lutyuv=y='16+219*pow(clip((val-16)/219,0,1),0" + text(exponent) + ")'";
  if (from >= 0) filter += ":enable='between(t," + text(from) + "," + text(to) + ")'";
  return filter;
}

constexpr const char* rangeExpanded =
    "lutyuv=y='clip((val-16)*255/219,0,255)':u='clip((val-128)*255/224+128,0,255)':v='clip((val-128)*255/"
    "224+128,0,255)'";

std::string frames(int first, int end) {
  return "trim=start_frame=" + std::to_string(first) + ":end_frame=" + std::to_string(end) + ",setpts=PTS-STARTPTS";
}

/// Without some frames, as if they had never been.
std::string without(const std::string& which) {
  return "select='not(" + which + ")',setpts=N/24/TB";
}

std::string cropped(const Region& part) {
  return "crop=iw*" + text(part.width()) + ":ih*" + text(part.height()) + ":iw*" + text(part.left) + ":ih*" +
         text(part.top) + ":exact=1,scale=640:360:flags=bicubic";
}

void addUnchanged(std::vector<ScanRecipe>& recipes) {
  ScanTruth remux = whole();
  remux.isIdentical = true;
  remux.causes = {CauseKind::Identical};
  recipes.push_back({"remux", {"-c", "copy"}, remux, true});
  for (const int crf : {18, 24, 28, 32, 36})
    recipes.push_back({"crf" + std::to_string(crf), x264("", crf), whole(), true});
  recipes.push_back({"prores", {"-c:v", "prores_ks", "-profile:v", "2"}, whole(), false, ".mov"});
  recipes.push_back({"mpeg4", {"-c:v", "mpeg4", "-q:v", "4"}, whole(), false});
  recipes.push_back({"mjpeg", {"-c:v", "mjpeg", "-q:v", "3", "-pix_fmt", "yuvj420p"}, whole(), false, ".mov"});
  recipes.push_back({"half-size", x264("scale=320:180"), whole()});
  recipes.push_back({"doubled-size", x264("scale=1280:720", 24), whole()});
  recipes.push_back({"long-gop", with(x264("", 26), {"-g", "600", "-sc_threshold", "0"}), whole()});
}

void addTimes(std::vector<ScanRecipe>& recipes) {
  recipes.push_back({"trim", x264(frames(175, 864)), pieces({{0, 689 / 24.0, 1, 175 / 24.0}})});
  recipes.push_back({"trim-one-frame", x264(frames(1, 864)), pieces({{0, 863 / 24.0, 1, 1 / 24.0}})});
  recipes.push_back({"excerpt", x264(frames(300, 600)), pieces({{0, 300 / 24.0, 1, 300 / 24.0}})});
  recipes.push_back({"short-excerpt", x264(frames(410, 480)), pieces({{0, 70 / 24.0, 1, 410 / 24.0}})});
  recipes.push_back({"ten-frames", x264(frames(440, 450)), pieces({{0, 10 / 24.0, 1, 440 / 24.0}})});
  recipes.push_back(
      {"black-leader", with(x264("tpad=start_duration=4:color=black"), bt709), pieces({{4, length + 4, 1, -4}})});
  recipes.push_back(
      {"held-leader", with(x264("tpad=start_duration=3:start_mode=clone"), bt709), pieces({{3, length + 3, 1, -3}})});
  recipes.push_back({"tail", with(x264("tpad=stop_duration=4:color=gray"), bt709), pieces({{0, length, 1, 0}})});
}

void addCuts(std::vector<ScanRecipe>& recipes) {
  recipes.push_back(
      {"cut-150", x264(without("between(n,300,449)")), pieces({{0, 12.5, 1, 0}, {12.5, 714 / 24.0, 1, 150 / 24.0}})});
  recipes.push_back({"cut-26", x264(without("between(n,400,425)")),
                     pieces({{0, 400 / 24.0, 1, 0}, {400 / 24.0, 838 / 24.0, 1, 26 / 24.0}})});
  recipes.push_back(
      {"cut-two", x264(without("between(n,200,259)+between(n,600,639)")),
       pieces({{0, 200 / 24.0, 1, 0}, {200 / 24.0, 540 / 24.0, 1, 2.5}, {540 / 24.0, 764 / 24.0, 1, 100 / 24.0}})});
  recipes.push_back({"drop-three", x264(without("between(n,431,433)")),
                     pieces({{0, 431 / 24.0, 1, 0}, {431 / 24.0, 861 / 24.0, 1, 3 / 24.0}})});
  recipes.push_back(
      {"drop-one", x264(without("eq(n,455)")), pieces({{0, 455 / 24.0, 1, 0}, {455 / 24.0, 863 / 24.0, 1, 1 / 24.0}})});
  recipes.push_back({"freeze", x264("loop=loop=12:size=1:start=450,setpts=N/24/TB"),
                     pieces({{0, 450 / 24.0, 1, 0}, {463 / 24.0, 876 / 24.0, 1, -0.5}})});
}

/// With a slate of some seconds, `s`, that `graph` puts beside the master's picture.
ScanRecipe withSlate(const std::string& name, int seconds, const std::string& graph, const ScanTruth& truth) {
  return {name,
          {"-f",
           "lavfi",
           "-i",
           "testsrc=s=640x360:r=24:d=" + std::to_string(seconds),
           "-filter_complex",
           "[1:v]format=yuv420p,setsar=1[s];" + graph,
           "-map",
           "[v]",
           "-c:v",
           "libx264",
           "-preset",
           "veryfast",
           "-crf",
           "20",
           "-colorspace",
           "bt709",
           "-color_primaries",
           "bt709",
           "-color_trc",
           "bt709"},
          truth};
}

void addSlates(std::vector<ScanRecipe>& recipes) {
  recipes.push_back(withSlate("slate-inside", 3,
                              "[0:v]split[a][b];[a]trim=end_frame=432,setpts=PTS-STARTPTS[h];"
                              "[b]trim=start_frame=432,setpts=PTS-STARTPTS[t];[h][s][t]concat=n=3,fps=24[v]",
                              pieces({{0, 18, 1, 0}, {21, 39, 1, -3}})));
  recipes.push_back(withSlate("slate-leader", 5, "[s][0:v]concat=n=2,fps=24[v]", pieces({{5, 41, 1, -5}})));
}

void addRates(std::vector<ScanRecipe>& recipes) {
  for (const char* const rate : {"25", "30", "23.976", "29.97", "12", "48", "60"}) {
    recipes.push_back({std::string("fps") + rate, x264(std::string("fps=") + rate), whole()});
  }
  recipes.push_back({"speed-up-25", with(x264("setpts=N/25/TB"), {"-r", "25"}), whole(25 / 24.0, length * 24 / 25)});
  recipes.push_back({"slow-down-23.976", with(x264("setpts=N*1001/24000/TB"), {"-r", "24000/1001"}),
                     whole(1 / 1.001, length * 1.001)});
  recipes.push_back({"trimmed-speed-up", with(x264(frames(200, 864) + ",setpts=N/25/TB"), {"-r", "25"}),
                     pieces({{0, 664 / 25.0, 25 / 24.0, 200 / 24.0}})});
  recipes.push_back({"faster", x264("setpts=PTS/1.1,fps=24"), whole(1.1, length / 1.1)});
  recipes.push_back({"telecine", x264("telecine=pattern=23,setpts=N/30/TB"), whole()});
  recipes.push_back({"blend-30", x264("framerate=fps=30"), whole()});
  recipes.push_back({"blend-25", x264("framerate=fps=25"), whole()});
}

void addPlaces(std::vector<ScanRecipe>& recipes) {
  recipes.push_back({"matte", x264("drawbox=0:0:iw:44:black:fill,drawbox=0:316:iw:44:black:fill"), whole()});
  recipes.push_back({"letterbox", x264("scale=640:270,pad=640:360:0:45"), seeing(whole(), {})});
  recipes.push_back({"pillarbox", x264("scale=480:360,pad=640:360:80:0"), seeing(whole(), {})});
  recipes.push_back({"window", x264("scale=512:288,pad=640:360:64:36"), seeing(whole(), {})});
  recipes.push_back({"window-off-centre", x264("scale=448:252,pad=640:360:150:80"), seeing(whole(), {})});
  for (const Region& part :
       {Region{0.025, 0.025, 0.975, 0.975}, Region{0.0833, 0.0833, 0.9167, 0.9167}, Region{0.02, 0.05, 0.88, 0.91},
        Region{0.2, 0.1, 0.9, 0.8}, Region{0, 0.25, 0.75, 1}, Region{0.01, 0, 1, 0.99}}) {
    char name[60];
    std::snprintf(name, sizeof name, "crop-%.0f-%.0f-%.0f-%.0f", 100 * part.left, 100 * part.top, 100 * part.right,
                  100 * part.bottom);
    recipes.push_back({name, x264(cropped(part)), seeing(whole(), part)});
  }
  recipes.push_back({"to-4-by-3", x264("crop=480:360,scale=640:480"), seeing(whole(), {0.125, 0, 0.875, 1})});
  recipes.push_back({"to-2.39", x264("crop=640:268"), seeing(whole(), {0, 46 / 360.0, 1, 314 / 360.0})});
}

void addTones(std::vector<ScanRecipe>& recipes) {
  for (const double exponent : {0.75, 0.9, 1.1, 1.2, 1.5, 2.0}) {
    recipes.push_back({"power-" + text(exponent).substr(0, 4), x264(power(exponent)), raised(whole(), exponent)});
  }
  for (const double from : {9.0, 20.5, 30.0}) {
    ScanTruth truth = whole();
    truth.tones = {{0, from, 1}, {from, length, 1.2}};
    truth.causes = {CauseKind::Power};
    recipes.push_back({"power-from-" + text(from).substr(0, 4), x264(power(1.2, from - 0.01)), truth, true});
  }
  ScanTruth strong = whole();
  strong.tones = {{0, 15, 1}, {15, length, 2.2}};
  strong.causes = {CauseKind::Power};
  recipes.push_back({"strong-power-from-15", x264(power(2.2, 14.99)), strong});
  ScanTruth between = whole();
  between.tones = {{0, 13, 1}, {13, 17, 0.85}, {17, length, 1}};
  between.causes = {CauseKind::Power};
  recipes.push_back({"power-between", x264(power(0.85, 12.99, 16.97)), between});
  recipes.push_back({"range-expanded", x264(rangeExpanded), caused(whole(), CauseKind::Range)});
  recipes.push_back({"range-compressed",
                     x264("lutyuv=y='16+val*219/255':u='128+(val-128)*224/255':v='128+(val-128)*224/255'"),
                     caused(whole(), CauseKind::Range)});
  recipes.push_back({"matrix", x264("scale=in_color_matrix=bt709:out_color_matrix=bt601,setparams=colorspace=bt709"),
                     caused(whole(), CauseKind::Matrix)});
  recipes.push_back({"gain", x264("lutyuv=y='16+(val-16)*0.85'"), caused(whole(), CauseKind::Gain)});
}

void addTogether(std::vector<ScanRecipe>& recipes) {
  recipes.push_back({"trim-letterbox-power-crf32",
                     x264(frames(100, 800) + "," + power(1.15) + ",scale=640:270,pad=640:360:0:45", 32),
                     raised(pieces({{0, 700 / 24.0, 1, 100 / 24.0}}), 1.15)});
  recipes.push_back(
      {"speed-up-crop-power-crf32",
       with(x264(frames(60, 864) + "," + power(0.85) + "," + cropped({0.05, 0.05, 0.95, 0.95}) + ",setpts=N/25/TB", 32),
            {"-r", "25"}),
       raised(pieces({{0, 804 / 25.0, 25 / 24.0, 60 / 24.0}}), 0.85)});
  recipes.push_back({"cut-pillarbox-30-crf32",
                     x264(without("between(n,350,420)") + ",scale=480:360,pad=640:360:80:0,fps=30", 32),
                     pieces({{0, 350 / 24.0, 1, 0}, {350 / 24.0, 793 / 24.0, 1, 71 / 24.0}})});
  recipes.push_back({"leader-matte-power-from",
                     with(x264("drawbox=0:0:iw:44:black:fill,drawbox=0:316:iw:44:black:fill," + power(1.2, 17.99) +
                                   ",tpad=start_duration=3:color=black",
                               32),
                          bt709),
                     {.pieces = {{3, length + 3, 1, -3}},
                      .tones = {{3, 21, 1}, {21, length + 3, 1.2}},
                      .causes = {CauseKind::Power}}});
}

void addRefused(std::vector<ScanRecipe>& recipes) {
  const ScanTruth refused{.isRefused = true, .pieces = {}, .causes = {CauseKind::Different}};
  recipes.push_back({"mirrored", x264("hflip"), refused, true});
  recipes.push_back({"upside-down", x264("vflip"), refused});
  recipes.push_back({"test-picture",
                     {"-f", "lavfi", "-i", "testsrc2=s=640x360:r=24:d=20", "-map", "1:v", "-c:v", "libx264", "-preset",
                      "veryfast", "-pix_fmt", "yuv420p"},
                     refused});
}

/// Little is left of a picture by then.
void addHard(std::vector<ScanRecipe>& recipes) {
  struct Change {
    const char* name;
    std::string filter;
    ScanTruth truth;
  };
  const std::vector<Change> changes{
      {"same", "", whole()},
      {"power-1.08", power(1.08), raised(whole(), 1.08)},
      {"power-0.93", power(0.93), raised(whole(), 0.93)},
      {"gain", "lutyuv=y='16+(val-16)*0.93'", caused(whole(), CauseKind::Gain)},
      {"range", rangeExpanded, caused(whole(), CauseKind::Range)},
      {"matrix", "scale=in_color_matrix=bt709:out_color_matrix=bt601,setparams=colorspace=bt709",
       caused(whole(), CauseKind::Matrix)}};
  for (const int crf : {40, 42, 44, 46, 48, 51}) {
    for (const auto& [name, filter, truth] : changes) {
      recipes.push_back({"hard-" + std::string(name) + "-crf" + std::to_string(crf), x264(filter, crf), truth, true});
      recipes.back().isHard = true;
    }
  }
}

}  // namespace

std::vector<ScanRecipe> scanRecipes() {
  std::vector<ScanRecipe> recipes;
  addUnchanged(recipes);
  addTimes(recipes);
  addCuts(recipes);
  addSlates(recipes);
  addRates(recipes);
  addPlaces(recipes);
  addTones(recipes);
  addTogether(recipes);
  addRefused(recipes);
  addHard(recipes);
  return recipes;
}

}  // namespace scan::test
