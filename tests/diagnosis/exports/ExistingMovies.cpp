#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

Colors inOtherRange(Colors colors) {
  colors.full = !colors.full;
  return colors;
}

Colors inOtherMatrix(Colors colors) {
  colors.matrix = colors.matrix == Matrix::Bt709 ? Matrix::Bt601 : Matrix::Bt709;
  return colors;
}

/// What an export of such samples is usually stated as.
Colors usual(const Colors& colors) {
  return colors.rgb ? video709 : Colors{colors.matrix};
}

Recipe changed(const std::string& name, const Truth& truth, const Master& movie, const Colors& from, const Colors& to,
               const Colors& tags) {
  return {.name = movie.name + "-" + name,
          .master = movie,
          .truth = truth,
          .filters = converted(from, to, x264(20).format),
          .encoding = x264(20),
          .tags = tags};
}

Recipe curved(const std::string& name, const Truth& truth, const Master& movie, const std::string& curve) {
  Recipe recipe = changed(name, truth, movie, movie.colors, usual(movie.colors), usual(movie.colors));
  recipe.filters = converted(movie.colors, rgbColors, rgbFormat) + "," + rgbCurve(curve) + "," +
                   converted(rgbColors, usual(movie.colors), recipe.encoding.format);
  return recipe;
}

std::vector<Recipe> rightExportsOf(const Master& movie) {
  const Colors colors = usual(movie.colors);
  return {rightExport("x264", movie, x264(20), colors), rightExport("x264-32", movie, x264(32), colors),
          rightExport("prores-other-matrix", movie, proRes(), inOtherMatrix(colors)),
          rightExport("x264-full", movie, x264(18), inOtherRange(colors)), rightExport("png", movie, png(), rgbColors)};
}

std::vector<Recipe> wrongExportsOf(const Master& movie) {
  const Colors& colors = movie.colors;
  const Colors stated = usual(colors);
  std::vector<Recipe> all{curved("rgb-power-1.2", power(1.2), movie, "pow(S\\,1.2)"),
                          curved("rgb-power-0.85", power(0.85), movie, "pow(S\\,0.85)"),
                          curved("fade", only(CauseKind::Gain), movie, "0.75*S")};
  all.push_back(changed("as-full", range(Direction::Expanded, {}), movie, colors, inOtherRange(stated), stated));
  all.push_back(changed("as-video", range(Direction::Compressed, {}), movie, colors, stated, inOtherRange(stated)));
  all.push_back(changed("wrong-matrix", matrix({}), movie, colors, inOtherMatrix(stated), stated));
  return all;
}

}  // namespace

std::vector<Recipe> recipesFor(const Master& movie) {
  std::vector<Recipe> all = rightExportsOf(movie);
  const std::vector<Recipe> wrong = wrongExportsOf(movie);
  all.insert(all.end(), wrong.begin(), wrong.end());
  return all;
}

}  // namespace diagnosis::test
