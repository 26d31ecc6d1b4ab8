#include "tests/diagnosis/exports/Recipe.h"

#include <utility>

namespace diagnosis::test {
namespace {

std::vector<std::string> outputArguments(const std::string& filters, const Encoding& encoding) {
  std::vector<std::string> arguments{"-map", "0:v:0", "-frames:v", "1"};
  if (!encoding.copied()) arguments.insert(arguments.end(), {"-vf", filters});
  arguments.insert(arguments.end(), encoding.codec.begin(), encoding.codec.end());
  return arguments;
}

void append(std::vector<std::string>& arguments, const std::vector<std::string>& further) {
  arguments.insert(arguments.end(), further.begin(), further.end());
}

const std::string fadingOut = "format=gbrap12le,geq=r='r(X\\,Y)':g='g(X\\,Y)':b='b(X\\,Y)':a='4095*min(1\\,X/W+0.3)'";

std::string chained(std::string filters, const std::string& next) {
  if (!filters.empty() && !next.empty()) filters += ",";
  return filters + next;
}

}  // namespace

Truth same() {
  return {{CauseKind::Same}};
}
Truth power(std::optional<double> exponent) {
  return {.causes = {CauseKind::Power}, .exponent = exponent};
}
Truth range(Direction direction, std::optional<Where> where) {
  return {.causes = {CauseKind::Range}, .direction = direction, .where = where};
}
Truth matrix(std::optional<Where> where) {
  return {.causes = {CauseKind::Matrix}, .where = where};
}
Truth only(CauseKind kind) {
  return {{kind}};
}
Truth both(CauseKind one, CauseKind other) {
  return {{one, other}};
}

std::vector<std::string> argumentsOf(const Recipe& recipe) {
  const std::string said = recipe.tags ? taggingFilter(*recipe.tags) : untaggingFilter();
  std::vector<std::string> arguments = outputArguments(chained(recipe.filters, said), recipe.encoding);
  if (recipe.tags && !recipe.encoding.copied()) append(arguments, taggingArguments(*recipe.tags));
  append(arguments, recipe.arguments);
  return arguments;
}

std::vector<std::string> argumentsOf(const Master& master) {
  const std::string picture = chained(chained("crop=640:360", std::string("format=") + rgbFormat), master.filters);
  const std::string samples = converted(rgbColors, master.colors, master.encoding.format);
  const std::string said = master.stated ? taggingFilter(master.colors) : untaggingFilter();
  std::vector<std::string> arguments = outputArguments(chained(chained(picture, samples), said), master.encoding);
  if (master.stated) append(arguments, taggingArguments(master.colors));
  return arguments;
}

Recipe rightExport(const std::string& name, const Master& master, const Encoding& encoding, const Colors& colors,
                   const std::string& through) {
  return {.name = master.name + "-" + name,
          .master = master,
          .truth = same(),
          .filters = chained(converted(master.colors, colors, encoding.format), through),
          .encoding = encoding,
          .tags = colors};
}

Recipe changedInRgb(const std::string& name, const Truth& truth, const Master& master, const Encoding& encoding,
                    const Colors& colors, const std::string& filters) {
  return {.name = master.name + "-" + name,
          .master = master,
          .truth = truth,
          .filters = converted(master.colors, rgbColors, rgbFormat) + "," + filters + "," +
                     converted(rgbColors, colors, encoding.format),
          .encoding = encoding,
          .tags = colors};
}

std::vector<Recipe> allRecipes() {
  std::vector<Recipe> all;
  for (const auto& family :
       {unchangedRecipes(), placedRecipes(), powerRecipes(), gainRecipes(), toneRecipes(), rangeRecipes(),
        matrixRecipes(), twofoldRecipes(), uncommonRecipes(), incomparableRecipes()}) {
    all.insert(all.end(), family.begin(), family.end());
  }
  return all;
}

Master proResMaster() {
  return {"prores", proRes(), video709};
}
Master h264Master() {
  return {"h264", x264(14), video709};
}
Master pngMaster() {
  return {"png", png(), rgbColors};
}
Master cineFormRgbMaster() {
  return {"cineformrgb", cineFormRgb(), rgbColors};
}
Master fullRangeMaster() {
  return {"full", x264(14), full709};
}
Master sdMaster() {
  return {"sd", proRes(), video601};
}
Master mpeg2Master() {
  return {"mpeg2", mpeg2(2), video601};
}
Master untaggedMaster() {
  return {.name = "untagged", .encoding = proRes(), .colors = video601, .stated = false};
}
Master tenBitMaster() {
  return {"tenbit", x265Ten(14), video709};
}
Master v210Master() {
  return {"v210", v210(), video709};
}

Master pqMaster() {
  const std::string light = "(0.1*pow(S\\,2.2))", raised = "pow(" + light + "\\,0.1593017578125)";
  return {"pq", x265Ten(14), pq2020,
          rgbCurve("pow((0.8359375+18.8515625*" + raised + ")/(1+18.6875*" + raised + ")\\,78.84375)")};
}
Master interlacedMaster() {
  const auto second = [](const std::string& plane) { return plane + "='" + plane + "(X+5*mod(Y\\,2)\\,Y)'"; };
  return {"interlaced", proResInterlaced(), video709,
          "geq=" + second("r") + ":" + second("g") + ":" + second("b") + ",setfield=tff"};
}
Master alphaMaster() {
  return {"alpha", proRes4444Alpha(), video709, fadingOut};
}
Master alphaRgbMaster() {
  return {"alphargb", animationAlpha(), rgbColors, fadingOut};
}

}  // namespace diagnosis::test
