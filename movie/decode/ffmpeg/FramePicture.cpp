#include "movie/decode/ffmpeg/FramePicture.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "movie/decode/ffmpeg/FrameDigest.h"
#include "movie/decode/ffmpeg/PlaneScaler.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

namespace movie {
namespace {

bool has(const AVPixFmtDescriptor& format, std::uint64_t flag) {
  return (format.flags & flag) != 0;
}

PictureModel modelOf(const AVPixFmtDescriptor& format, const FrameOrigin& origin) {
  if (has(format, AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) return PictureModel::Rgb;
  if (format.nb_components >= 3) return PictureModel::YCbCr;
  return origin.imageCodec || format.comp[0].depth < 8 ? PictureModel::Grey : PictureModel::YCbCr;
}

/// None for the formats that have samples.
std::optional<Reason> obstacleOf(const AVPixFmtDescriptor& format, int pixelFormat) {
  if (has(format, AV_PIX_FMT_FLAG_HWACCEL)) return Reason::PixelsOutsideMemory;
  if (has(format, AV_PIX_FMT_FLAG_FLOAT)) return Reason::PixelsFloating;
  if (has(format, AV_PIX_FMT_FLAG_BAYER)) return Reason::PixelsMosaic;
  // Its descriptor cannot tell where its samples lie.
  if (pixelFormat == AV_PIX_FMT_UYYVYY411) return Reason::PixelsUnknown;
  return std::nullopt;
}

PictureRange rangeOf(const AVFrame& frame, const AVPixFmtDescriptor& format, PictureModel model,
                     const FrameOrigin& origin) {
  if (std::string_view(format.name).starts_with("yuvj")) return PictureRange::Full;
  if (frame.color_range == AVCOL_RANGE_MPEG) return PictureRange::Video;
  if (frame.color_range == AVCOL_RANGE_JPEG) return PictureRange::Full;
  if (model != PictureModel::YCbCr || !origin.fullRange) return PictureRange::Unspecified;
  return *origin.fullRange ? PictureRange::Full : PictureRange::Video;
}

/// One component of a frame: how its rows are read.
class Component {
 public:
  Component(const AVFrame& frame, const AVPixFmtDescriptor& format, int index)
      : frame_(frame),
        format_(format),
        index_(index),
        layout_(format.comp[has(format, AV_PIX_FMT_FLAG_PAL) ? 0 : index]) {
    if (has(format, AV_PIX_FMT_FLAG_PAL)) readPalette();
  }

  int depth() const { return palette_.empty() ? layout_.depth : 8; }

  PlaneSamples samples() const {
    constexpr std::uint64_t otherwise = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM;
    const bool isOneByte = layout_.depth == 8;
    const bool isForeign = has(format_, AV_PIX_FMT_FLAG_BE) == (std::endian::native == std::endian::little);
    const bool isSimple = layout_.shift == 0 && layout_.step == (isOneByte ? 1 : 2) && layout_.depth >= 8;
    if (has(format_, otherwise) || !isSimple || (!isOneByte && isForeign)) return {};
    return {at(0, 0), frame_.linesize[layout_.plane], layout_.step, static_cast<std::uint16_t>(mask())};
  }
  int plane() const { return layout_.plane; }

  const std::uint16_t* row(int y, int x, int count, std::uint16_t* scratch) const {
    const bool bigEndian = has(format_, AV_PIX_FMT_FLAG_BE);
    if (!palette_.empty()) return paletteRow(y, x, count, scratch);
    if (has(format_, AV_PIX_FMT_FLAG_BITSTREAM)) return bitRow(y, x, count, scratch);
    if (layout_.shift + layout_.depth > 8) {
      return bigEndian ? wordRow<std::endian::big>(y, x, count, scratch)
                       : wordRow<std::endian::little>(y, x, count, scratch);
    }
    return bigEndian ? genericRow(y, x, count, scratch) : byteRow(y, x, count, scratch);
  }

 private:
  const std::uint8_t* at(int y, int x) const {
    return frame_.data[layout_.plane] + static_cast<std::ptrdiff_t>(y) * frame_.linesize[layout_.plane] +
           static_cast<std::ptrdiff_t>(x) * layout_.step + layout_.offset;
  }
  unsigned mask() const { return (1U << layout_.depth) - 1U; }

  const std::uint16_t* byteRow(int y, int x, int count, std::uint16_t* out) const {
    const std::uint8_t* in = at(y, x);
    const unsigned codes = mask();
    if (layout_.step == 1) {
      for (int i = 0; i < count; ++i) out[i] = in[i];
      return out;
    }
    for (int i = 0; i < count; ++i, in += layout_.step) {
      out[i] = static_cast<std::uint16_t>((static_cast<unsigned>(*in) >> layout_.shift) & codes);
    }
    return out;
  }

  template <std::endian Order>
  const std::uint16_t* wordRow(int y, int x, int count, std::uint16_t* out) const {
    const std::uint8_t* in = at(y, x);
    const unsigned codes = mask();
    const int shift = layout_.shift;
    const auto word = [codes, shift](const std::uint8_t* from) {
      std::uint16_t value = 0;
      std::memcpy(&value, from, sizeof value);
      unsigned bits = value;
      if constexpr (Order != std::endian::native) bits = ((bits << 8) | (bits >> 8)) & 0xFFFFU;
      return static_cast<std::uint16_t>((bits >> shift) & codes);
    };
    if (layout_.step == 2) {
      for (int i = 0; i < count; ++i) out[i] = word(in + 2 * static_cast<std::ptrdiff_t>(i));
    } else {
      for (int i = 0; i < count; ++i, in += layout_.step) out[i] = word(in);
    }
    return out;
  }

  const std::uint16_t* genericRow(int y, int x, int count, std::uint16_t* out) const {
    const std::uint8_t* data[4] = {frame_.data[0], frame_.data[1], frame_.data[2], frame_.data[3]};
    av_read_image_line2(out, data, frame_.linesize, &format_, x, y, index_, count, 0, sizeof *out);
    return out;
  }

  const std::uint16_t* bitRow(int y, int x, int count, std::uint16_t* out) const {
    genericRow(y, x, count, out);
    if (frame_.format == AV_PIX_FMT_MONOWHITE) {
      for (int i = 0; i < count; ++i) out[i] = static_cast<std::uint16_t>(1U - out[i]);
    }
    return out;
  }

  /// The colour table holds one 32-bit word a colour: alpha, red, green and blue from the top.
  void readPalette() {
    palette_.resize(256);
    for (std::size_t i = 0; i < palette_.size(); ++i) {
      std::uint32_t color = 0;
      std::memcpy(&color, frame_.data[1] + 4 * i, sizeof color);
      palette_[i] = static_cast<std::uint16_t>((color >> (16 - 8 * index_)) & 0xFFU);
    }
  }

  const std::uint16_t* paletteRow(int y, int x, int count, std::uint16_t* out) const {
    const std::uint8_t* const in = at(y, x);
    for (int i = 0; i < count; ++i) out[i] = palette_[in[i]];
    return out;
  }

  const AVFrame& frame_;
  const AVPixFmtDescriptor& format_;
  int index_;
  AVComponentDescriptor layout_;
  std::vector<std::uint16_t> palette_;
};

/// The part of the frame that is asked for, held within it, in its own pixels.
PictureCrop partOf(const AVFrame& frame, const PictureCrop& asked) {
  PictureCrop part{0, 0, static_cast<double>(frame.width), static_cast<double>(frame.height)};
  const auto usable = [](double value) { return std::isfinite(value); };
  if (!usable(asked.left) || !usable(asked.top) || !(asked.width > 0) || !(asked.height > 0)) return part;
  const double right = std::min(asked.left + asked.width, part.width);
  const double bottom = std::min(asked.top + asked.height, part.height);
  const double left = std::max(asked.left, 0.0);
  const double top = std::max(asked.top, 0.0);
  if (right <= left || bottom <= top) return part;
  return {left, top, right - left, bottom - top};
}

int resultSize(int asked, double cropped) {
  return asked > 0 ? asked : std::max(1, static_cast<int>(std::lround(cropped)));
}

std::vector<std::uint16_t> scaledComponent(const AVFrame& frame, const AVPixFmtDescriptor& format, int index,
                                           const PictureCrop& part, const Picture& picture, Scaling scaling,
                                           FrameDigest* digest) {
  const Component component(frame, format, index);
  const bool subsampled = index > 0 && !has(format, AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL);
  const int across = subsampled ? format.log2_chroma_w : 0;
  const int down = subsampled ? format.log2_chroma_h : 0;
  const AxisScale horizontal{std::ldexp(part.left, -across), std::ldexp(part.width, -across),
                             AV_CEIL_RSHIFT(frame.width, across), picture.width};
  const AxisScale vertical{std::ldexp(part.top, -down), std::ldexp(part.height, -down),
                           AV_CEIL_RSHIFT(frame.height, down), picture.height};
  const int codes = 1 << component.depth();
  const double factor = component.depth() == picture.depth ? 65536.0 / codes : 255.0 * 256.0 / (codes - 1);
  const auto read = [&component](int y, int x, int count, std::uint16_t* scratch) {
    return component.row(y, x, count, scratch);
  };
  if (scaling == Scaling::Exact) return scalePlane(read, horizontal, vertical, factor);
  PlaneRows rows{read, component.samples()};
  if (digest != nullptr) rows.beforeRows = [&](int end) { digest->reach(component.plane(), end); };
  return scalePlaneQuickly(rows, horizontal, vertical, factor);
}

/// DCDM X'Y'Z' (SMPTE 428-1: gamma 2.6, 48 of 52.37 cd/m2 is white) to linear sRGB primaries (IEC 61966-2-1),
/// gamma 2.2.
void convertXyz(Picture& picture) {
  static constexpr double matrix[3][3] = {
      {3.2404542, -1.5371385, -0.4985314}, {-0.9692660, 1.8760108, 0.0415560}, {0.0556434, -0.2040259, 1.0572252}};
  constexpr double white = 4095.0 * 16.0;
  for (std::size_t i = 0; i < picture.planes[0].size(); ++i) {
    double linear[3];
    for (std::size_t c = 0; c < 3; ++c) linear[c] = std::pow(picture.planes[c][i] / white, 2.6) * 52.37 / 48.0;
    for (std::size_t c = 0; c < 3; ++c) {
      const double value = matrix[c][0] * linear[0] + matrix[c][1] * linear[1] + matrix[c][2] * linear[2];
      const double code = std::pow(std::clamp(value, 0.0, 1.0), 1.0 / 2.2) * white;
      picture.planes[c][i] = static_cast<std::uint16_t>(std::floor(code + 0.5));
    }
  }
  picture.model = PictureModel::Rgb;
  picture.range = PictureRange::Full;
  picture.primaries = 1;
  picture.transferFunction = 4;
  picture.matrix = 0;
}

int depthOf(const AVPixFmtDescriptor& format) {
  if (has(format, AV_PIX_FMT_FLAG_PAL)) return 8;
  const int components = format.nb_components >= 3 ? 3 : 1;
  for (int i = 0; i < components; ++i) {
    if (format.comp[i].depth < 8 || format.comp[i].depth != format.comp[0].depth) return 8;
  }
  return format.comp[0].depth;
}

}  // namespace

tl::expected<Picture, Clause> pictureOfFrame(const AVFrame& frame, const FrameOrigin& origin,
                                             const PictureRequest& request, Scaling scaling) {
  const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (format == nullptr || frame.data[0] == nullptr || frame.width <= 0 || frame.height <= 0) {
    return tl::make_unexpected(Reason::NoPicture);
  }
  if (const auto obstacle = obstacleOf(*format, frame.format)) {
    return tl::make_unexpected(Clause(*obstacle, {verbatim(format->name)}));
  }
  const PictureCrop part = partOf(frame, request.crop);
  Picture picture;
  picture.width = resultSize(request.width, part.width);
  picture.height = resultSize(request.height, part.height);
  picture.depth = depthOf(*format);
  picture.model = modelOf(*format, origin);
  picture.range = rangeOf(frame, *format, picture.model, origin);
  picture.primaries = static_cast<std::uint16_t>(frame.color_primaries);
  picture.transferFunction = static_cast<std::uint16_t>(frame.color_trc);
  picture.matrix = static_cast<std::uint16_t>(frame.colorspace);
  picture.codedHeight = frame.height;
  std::optional<FrameDigest> digest;
  if (request.digested) digest.emplace(frame);

  const bool colorless = format->nb_components < 3 && !has(*format, AV_PIX_FMT_FLAG_PAL);
  for (int i = 0; i < (colorless ? 1 : 3); ++i) {
    picture.planes[static_cast<std::size_t>(i)] =
        scaledComponent(frame, *format, i, part, picture, scaling, digest ? &*digest : nullptr);
  }
  if (digest) picture.digest = digest->value();
  if (colorless && picture.model == PictureModel::YCbCr) {
    constexpr std::uint16_t neutral = 0x8000;
    picture.planes[1].assign(picture.planes[0].size(), neutral);
    picture.planes[2] = picture.planes[1];
  }
  if (frame.format == AV_PIX_FMT_XYZ12LE || frame.format == AV_PIX_FMT_XYZ12BE) convertXyz(picture);
  return picture;
}

}  // namespace movie
