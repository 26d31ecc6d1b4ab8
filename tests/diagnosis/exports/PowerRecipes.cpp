#include <string>

#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

/// "prores-luma-1.25"
std::string named(const Master& master, const std::string& what, double number) {
  return master.name + "-" + what + "-" + std::to_string(number).substr(0, 5);
}

std::string raised(double exponent) {
  return "pow(clip(S\\,0\\,1.1)\\," + std::to_string(exponent) + ")";
}

/// Luma raised, in the master's own samples.
Recipe lumaPower(const Master& master, const Encoding& encoding, const Colors& colors, double exponent) {
  return {.name = named(master, encoding.codec[1] + "-luma-power", exponent),
          .master = master,
          .truth = power(exponent),
          .filters = lumaCurve(master.encoding.format, master.colors.full, raised(exponent)) + "," +
                     converted(master.colors, colors, encoding.format),
          .encoding = encoding,
          .tags = colors};
}

Recipe rgbPower(const Master& master, const Encoding& encoding, const Colors& colors, double exponent) {
  return {.name = named(master, encoding.codec[1] + "-rgb-power", exponent),
          .master = master,
          .truth = power(exponent),
          .filters = converted(master.colors, rgbColors, rgbFormat) + "," + rgbCurve(raised(exponent)) + "," +
                     converted(rgbColors, colors, encoding.format),
          .encoding = encoding,
          .tags = colors};
}

/// The slider of a player or an editor: on codes of 8 bits from 0 to 255, so that its exponent is not quite 1 / gamma.
Recipe slider(const Master& master, const Encoding& encoding, double gamma) {
  return {.name = named(master, "slider", gamma),
          .master = master,
          .truth = power(std::nullopt),
          .filters = converted(master.colors, master.colors, encoding.format) + ",eq=gamma=" + std::to_string(gamma),
          .encoding = encoding,
          .tags = master.colors};
}

Recipe placedPower(Recipe recipe, const std::string& name, const std::string& filter, const Placement& placement) {
  recipe.name += "-" + name;
  recipe.filters += "," + filter;
  recipe.placement = placement;
  return recipe;
}

void addPlacedPowers(std::vector<Recipe>& all) {
  Placement inBars, cut, turned;
  inBars.dest = {0, 0.125, 1, 0.875};
  cut.source = {0.125, 0, 0.875, 1};
  turned.mirroredX = true;
  all.push_back(
      placedPower(rgbPower(proResMaster(), x264(21), video709, 1.21), "letterbox", "pad=640:480:0:60:black", inBars));
  all.push_back(
      placedPower(lumaPower(proResMaster(), x264(21), video709, 0.83), "letterbox", "pad=640:480:0:60:black", inBars));
  all.push_back(placedPower(rgbPower(proResMaster(), x264(21), video709, 0.81), "cropped", "crop=480:360", cut));
  all.push_back(placedPower(lumaPower(proResMaster(), x264(22), video709, 1.3), "mirrored", "hflip", turned));
  all.push_back(placedPower(rgbPower(proResMaster(), x264(22), video709, 1.12), "small", "scale=426:240", {}));
}

}  // namespace

std::vector<Recipe> powerRecipes() {
  std::vector<Recipe> all;
  const Master master = proResMaster();
  for (const double exponent : {0.5, 0.6, 0.7, 0.8, 0.9, 0.95, 1.05, 1.1, 1.25, 1.4, 1.7, 2.0}) {
    all.push_back(lumaPower(master, proRes(), video709, exponent));
  }
  for (const double exponent :
       {0.5, 0.65, 0.8, 1.8 / 2.2, 1.96 / 2.2, 0.9, 0.95, 1.05, 2.4 / 2.2, 1.1, 2.2 / 1.96, 2.2 / 1.8, 1.5, 2.0}) {
    all.push_back(rgbPower(master, proRes(), video709, exponent));
  }
  for (const double exponent : {0.75, 0.9, 1.1, 1.25}) all.push_back(lumaPower(master, x264(21), video709, exponent));
  for (const double exponent : {0.85, 1.15}) all.push_back(lumaPower(master, x264(32), video709, exponent));
  for (const double exponent : {0.85, 1.09, 1.3}) all.push_back(rgbPower(master, x264(26), video709, exponent));
  for (const double exponent : {0.82, 1.2}) all.push_back(rgbPower(master, x265(28), video709, exponent));
  all.push_back(rgbPower(master, mpeg4(4), video709, 0.88));
  all.push_back(rgbPower(master, mjpeg(3), full709, 1.2));
  all.push_back(lumaPower(h264Master(), proRes(), video709, 0.82));
  all.push_back(lumaPower(h264Master(), x264(24), video709, 1.15));
  for (const double exponent : {0.8, 0.92, 1.2, 1.6})
    all.push_back(rgbPower(pngMaster(), x264(20), video709, exponent));
  all.push_back(rgbPower(pngMaster(), png(), rgbColors, 0.88));
  all.push_back(rgbPower(cineFormRgbMaster(), proRes(), video709, 1.12));
  all.push_back(rgbPower(cineFormRgbMaster(), x264(22), video601, 0.86));
  all.push_back(lumaPower(fullRangeMaster(), x264(20), full709, 0.85));
  all.push_back(lumaPower(fullRangeMaster(), x264(20), video709, 1.2));
  all.push_back(rgbPower(sdMaster(), x264(20), video601, 1.18));
  all.push_back(rgbPower(sdMaster(), proRes(), video709, 0.88));
  all.push_back(lumaPower(mpeg2Master(), x264(22), video601, 1.25));
  for (const double gamma : {0.8, 0.9, 1.15, 1.3}) all.push_back(slider(master, x264(18), gamma));
  all.push_back(slider(h264Master(), x264(23), 1.2));
  all.push_back(slider(h264Master(), x264(23), 0.85));
  addPlacedPowers(all);
  return all;
}

}  // namespace diagnosis::test
