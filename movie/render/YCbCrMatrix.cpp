#include "movie/render/YCbCrMatrix.h"

namespace movie {
namespace {

constexpr std::uint16_t bt709 = 1;
constexpr std::uint16_t bt601 = 6;
constexpr std::uint16_t yCgCo = 8;
constexpr int linesOfHighDefinition = 720;

}  // namespace

std::optional<LumaWeights> lumaWeights(std::uint16_t matrix) {
  switch (matrix) {
    case bt709:
      return LumaWeights{0.2126, 0.0722};
    case 4:
      return LumaWeights{0.30, 0.11};
    case 5:
    case bt601:
      return LumaWeights{0.299, 0.114};
    case 7:
      return LumaWeights{0.212, 0.087};
    case 9:
      return LumaWeights{0.2627, 0.0593};
    default:
      return std::nullopt;
  }
}

ChromaWeights chromaWeights(const LumaWeights& luma) {
  const double kg = 1.0 - luma.kr - luma.kb;
  const double red = 2.0 * (1.0 - luma.kr);
  const double blue = 2.0 * (1.0 - luma.kb);
  return {.cb = {0.0, -blue * luma.kb / kg, blue}, .cr = {red, -red * luma.kr / kg, 0.0}};
}

std::optional<ChromaWeights> chromaWeights(std::uint16_t matrix) {
  if (matrix == yCgCo) return ChromaWeights{.cb = {-1.0, 1.0, -1.0}, .cr = {1.0, 0.0, -1.0}};
  const auto luma = lumaWeights(matrix);
  if (!luma) return std::nullopt;
  return chromaWeights(*luma);
}

std::uint16_t matrixIndexInForce(const std::optional<NclcParameters>& nclc, std::uint16_t codedMatrix,
                                 int codedHeight) {
  if (nclc && chromaWeights(nclc->matrix)) return nclc->matrix;
  if (chromaWeights(codedMatrix)) return codedMatrix;
  return codedHeight >= linesOfHighDefinition ? bt709 : bt601;
}

std::uint16_t matrixIndexInForce(const std::optional<NclcParameters>& nclc, const Picture& picture) {
  return matrixIndexInForce(nclc, picture.matrix, picture.codedHeight);
}

ChromaWeights matrixInForce(const std::optional<NclcParameters>& nclc, const Picture& picture) {
  return *chromaWeights(matrixIndexInForce(nclc, picture));
}

}  // namespace movie
