#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

Recipe showing(Shows what, const std::string& name, const Master& master, const Encoding& encoding,
               const std::string& through = "") {
  Recipe recipe = rightExport(name, master, encoding, master.colors.rgb ? video709 : master.colors, through);
  recipe.truth = only(CauseKind::Different);
  recipe.shows = what;
  return recipe;
}

Recipe onEveryClip(Recipe recipe) {
  recipe.everyClip = true;
  return recipe;
}

/// The same master's picture painted over.
Recipe paintedOver(const std::string& name, const std::string& filter) {
  Recipe recipe = rightExport(name, proResMaster(), x264(20), video709, filter);
  recipe.truth = only(CauseKind::Different);
  return recipe;
}

/// A master's picture multiplied until hardly anything is left of it.
Master darkMaster(const std::string& name, const std::string& factor) {
  Master master = proResMaster();
  master.name = name;
  master.filters = rgbCurve(factor + "*S");
  return master;
}

/// A master of one colour.
Master plainMaster(const std::string& name, const std::string& level) {
  Master master = proResMaster();
  master.name = name;
  master.filters = rgbCurve("0*S+" + level);
  return master;
}

Recipe ofMaster(const std::string& name, const Truth& truth, const Master& master, const std::string& through = "") {
  Recipe recipe = rightExport(name, master, x264(20), video709, through);
  recipe.truth = truth;
  return recipe;
}

const std::string bars = "geq=lum='40+24*floor(X/W*8)':cb='128+60*cos(2*floor(X/W*8))':cr='128+60*sin(3*floor(X/W*8))'";
const std::string slate =
    "drawbox=0:0:640:360:0x202020:fill,drawbox=80:60:300:40:white:fill,drawbox=80:140:420:30:white:fill,"
    "drawbox=80:200:380:30:white:fill,drawbox=80:260:120:30:yellow:fill";

}  // namespace

std::vector<Recipe> incomparableRecipes() {
  const Truth dark = only(CauseKind::Dark), nothing = only(CauseKind::Unreadable);
  return {
      onEveryClip(showing(Shows::AnotherClip, "other", proResMaster(), x264(20))),
      showing(Shows::AnotherClip, "other-30", h264Master(), x264(30)),
      showing(Shows::AnotherClip, "other-mirrored", proResMaster(), x264(22), "hflip"),
      showing(Shows::AnotherClip, "other-letterbox", proResMaster(), x264(22), "pad=640:480:0:60:black"),
      showing(Shows::AnotherClip, "other-small", proResMaster(), x264(22), "scale=320:180"),
      showing(Shows::AnotherClip, "other", pngMaster(), x264(22)),
      onEveryClip(showing(Shows::LaterMoment, "later", proResMaster(), x264(20))),
      showing(Shows::LaterMoment, "later", h264Master(), proRes()),
      showing(Shows::LaterMoment, "later", pngMaster(), x264(24)),
      showing(Shows::LaterMoment, "later-mirrored", sdMaster(), x264(24), "hflip"),
      showing(Shows::LaterMoment, "later-cropped", proResMaster(), x264(22), "crop=480:360"),
      paintedOver("noise", "lutyuv=y=128:u=128:v=128,noise=alls=100"),
      paintedOver("bars", bars),
      paintedOver("slate", slate),
      paintedOver("black", "lutyuv=y=16:u=128:v=128"),
      paintedOver("grey", "lutyuv=y=128:u=128:v=128"),
      ofMaster("x264", dark, darkMaster("dark", "0.06")),
      ofMaster("other-grade", dark, darkMaster("darker", "0.03"), "eq=gamma=1.2"),
      ofMaster("x264", nothing, plainMaster("plain-grey", "0.5"), "lutyuv=y=170"),
      ofMaster("x264-u", nothing, plainMaster("plain-light", "0.8"), "lutyuv=y=60:u=150"),
  };
}

}  // namespace diagnosis::test
