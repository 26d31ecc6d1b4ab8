#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

Recipe copiedExport(const std::string& name, const Master& master, const std::string& extension) {
  return {.name = master.name + "-" + name,
          .master = master,
          .truth = only(CauseKind::Identical),
          .filters = "",
          .encoding = copied(extension),
          .tags = master.colors};
}

/// Converted by another program part than usual: `filter` works on 8 bits.
Recipe convertedBy(const std::string& name, const std::string& filter, const Encoding& encoding) {
  Recipe recipe = rightExport(name, mpeg2Master(), encoding, video709);
  recipe.filters = filter;
  return recipe;
}

std::vector<Recipe> fromProRes() {
  const Master master = proResMaster();
  return {
      rightExport("x264-16", master, x264(16), video709),
      rightExport("x264-20", master, x264(20), video709),
      rightExport("x264-23", master, x264(23), video709),
      rightExport("x264-28", master, x264(28), video709),
      rightExport("x264-32", master, x264(32), video709),
      rightExport("x264-36", master, x264(36), video709),
      rightExport("x264-ten", master, x264Ten(20), video709),
      rightExport("x264-full", master, x264(20), full709),
      rightExport("x264-full-30", master, x264(30), full709),
      rightExport("x264-601", master, x264(20), video601),
      rightExport("x264-2020", master, x264Ten(18), video2020),
      rightExport("x264-interlaced", master, x264Interlaced(20), video709, "setfield=tff"),
      rightExport("x265-22", master, x265(22), video709),
      rightExport("x265-28", master, x265(28), video709),
      rightExport("x265-34", master, x265(34), video709),
      rightExport("x265-ten", master, x265Ten(24), video709),
      rightExport("x265-full-601", master, x265(22), full601),
      rightExport("mpeg4-3", master, mpeg4(3), video709),
      rightExport("mpeg4-8", master, mpeg4(8), video709),
      rightExport("mpeg2", master, mpeg2(4), video709),
      rightExport("dnxhr", master, dnxhr(), video709),
      rightExport("dnxhr-ten", master, dnxhrTen(), video709),
      rightExport("mjpeg", master, mjpeg(3), full709),
      rightExport("mjpeg-601", master, mjpeg(4), full601),
      rightExport("v210", master, v210(), video709),
      rightExport("prores4444", master, proRes4444(), video709),
      rightExport("jpeg2000", master, jpeg2000(), video709),
      rightExport("cineform", master, cineForm(), video709),
      rightExport("prores601", master, proRes(), video601),
      rightExport("png", master, png(), rgbColors),
      rightExport("animation", master, animation(), rgbColors),
  };
}

std::vector<Recipe> fromRgb() {
  const Master png8 = pngMaster(), film = cineFormRgbMaster();
  return {
      rightExport("x264", png8, x264(18), video709),
      rightExport("x264-28", png8, x264(28), video709),
      rightExport("x264-601", png8, x264(20), video601),
      rightExport("x264-full", png8, x264(20), full709),
      rightExport("x264-full-601", png8, x264(20), full601),
      rightExport("x265", png8, x265(24), video709),
      rightExport("prores", png8, proRes(), video709),
      rightExport("prores601", png8, proRes(), video601),
      rightExport("prores4444", png8, proRes4444(), video709),
      rightExport("mjpeg", png8, mjpeg(3), full601),
      rightExport("v210", png8, v210(), video709),
      rightExport("animation", png8, animation(), rgbColors),
      rightExport("x264", film, x264(20), video709),
      rightExport("x264-601", film, x264(22), video601),
      rightExport("prores", film, proRes(), video709),
      rightExport("png", film, png(), rgbColors),
  };
}

std::vector<Recipe> fromOthers() {
  const Master full = fullRangeMaster(), sd = sdMaster(), silent = untaggedMaster();
  std::vector<Recipe> recipes{
      rightExport("prores", h264Master(), proRes(), video709),
      rightExport("x264-28", h264Master(), x264(28), video709),
      rightExport("x264-36", h264Master(), x264(36), video709),
      rightExport("x265", h264Master(), x265(26), video709),
      rightExport("png", h264Master(), png(), rgbColors),
      rightExport("x264-full", h264Master(), x264(22), full709),
      rightExport("x264", full, x264(20), video709),
      rightExport("x264-full", full, x264(24), full709),
      rightExport("prores", full, proRes(), video709),
      rightExport("png", full, png(), rgbColors),
      rightExport("mjpeg", full, mjpeg(3), full709),
      rightExport("x264-601", sd, x264(22), video601),
      rightExport("x264-709", sd, x264(22), video709),
      rightExport("prores-709", sd, proRes(), video709),
      rightExport("png", sd, png(), rgbColors),
      rightExport("mjpeg", sd, mjpeg(3), full601),
      rightExport("x264-601", mpeg2Master(), x264(24), video601),
      convertedBy("colorspace", "colorspace=iall=bt709:ispace=smpte170m:all=bt709:format=yuv422p,format=yuv420p",
                  x264(20)),
      convertedBy("colormatrix", "colormatrix=bt601:bt709,format=yuv420p", x264(22)),
      rightExport("x264-601", silent, x264(20), video601),
      rightExport("x264-709", silent, x264(20), video709),
      rightExport("x264", tenBitMaster(), x264(22), video709),
      rightExport("prores", tenBitMaster(), proRes(), video709),
      rightExport("prores", v210Master(), proRes(), video709),
      rightExport("v210", v210Master(), v210(), video709),
  };
  recipes.push_back(rightExport("x264-silent", silent, x264(20), video601));
  recipes.back().tags.reset();
  return recipes;
}

std::vector<Recipe> remuxed() {
  return {
      copiedExport("remux", proResMaster(), ".mov"), copiedExport("remux", h264Master(), ".mov"),
      copiedExport("remux", pngMaster(), ".mov"),    copiedExport("remux", fullRangeMaster(), ".mov"),
      copiedExport("remux", sdMaster(), ".mov"),     copiedExport("remux", tenBitMaster(), ".mov"),
  };
}

}  // namespace

std::vector<Recipe> unchangedRecipes() {
  std::vector<Recipe> all;
  for (const auto& part : {fromProRes(), fromRgb(), fromOthers(), remuxed()})
    all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace diagnosis::test
