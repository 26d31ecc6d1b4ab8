#include "cli/picture/PictureFile.h"

#include <algorithm>

#include "movie/decode/DecoderModule.h"

namespace cli {
namespace {

/// The last four characters, in lower case.
std::string nameEnding(const std::string& path) {
  std::string end = path.substr(path.size() - std::min<std::size_t>(path.size(), 4));
  std::transform(end.begin(), end.end(), end.begin(),
                 [](char each) { return each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each; });
  return end;
}

}  // namespace

tl::expected<PictureFile, std::string> PictureFile::named(const std::string& path) {
  const std::string end = nameEnding(path);
  if (end == ".svg") return PictureFile(nullptr);
  if (end != ".png") return tl::unexpected<std::string>("A picture of a scan is an .svg or a .png file.");
  const auto module = movie::exportedBy<PictureModule>(pictureModuleName, pictureModuleEntry);
  if (!module) {
    return tl::unexpected<std::string>(
        "What makes PNG pictures is not installed, or does not fit; an .svg file can be made all the same.");
  }
  return PictureFile(*module);
}

tl::expected<std::string, std::string> PictureFile::bytesOf(const std::string& svg) const {
  if (module_ == nullptr) return svg;
  constexpr double scale = 2;
  const auto png = module_->png(svg, scale);
  if (!png) return tl::unexpected("The picture cannot be made: " + png.error() + ".");
  return std::string(png->begin(), png->end());
}

}  // namespace cli
