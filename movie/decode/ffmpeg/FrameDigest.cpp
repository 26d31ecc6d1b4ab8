#include "movie/decode/ffmpeg/FrameDigest.h"

#include <algorithm>
#include <array>
#include <cstddef>

#ifdef LUMACHECK_XXHASH_DISPATCH
#define XXH_STATIC_LINKING_ONLY  // for a state that is no object of its own
#include <xxh_x86dispatch.h>
#else
// All of it in this file: nothing to link.
#define XXH_INLINE_ALL
#include <xxhash.h>
#endif

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace movie {

/// XXH3 of 64 bits, over the frame's format and size and then row after row.
struct FrameDigest::Rows {
  explicit Rows(const AVFrame& from)
      : frame(from), description(av_pix_fmt_desc_get(static_cast<AVPixelFormat>(from.format))) {
    XXH3_64bits_reset(&state);
    const std::array<int, 3> shape{from.format, from.width, from.height};
    add(shape.data(), sizeof shape);
    isPalette = description != nullptr && (description->flags & AV_PIX_FMT_FLAG_PAL) != 0;
    if (description != nullptr) planes = isPalette ? 1 : av_pix_fmt_count_planes(format());
  }

  AVPixelFormat format() const { return static_cast<AVPixelFormat>(frame.format); }
  void add(const void* bytes, std::size_t count) { XXH3_64bits_update(&state, bytes, count); }

  int rowsOf(int ofPlane) const {
    return AV_CEIL_RSHIFT(frame.height, ofPlane == 1 || ofPlane == 2 ? description->log2_chroma_h : 0);
  }

  void addUpTo(int end) {
    const int bytes = av_image_get_linesize(format(), frame.width, plane);
    end = std::min(end, rowsOf(plane));
    for (; row < end; ++row) {
      if (bytes <= 0 || frame.data[plane] == nullptr) continue;
      add(frame.data[plane] + static_cast<std::ptrdiff_t>(row) * frame.linesize[plane],
          static_cast<std::size_t>(bytes));
    }
  }

  const AVFrame& frame;
  const AVPixFmtDescriptor* description;
  bool isPalette = false;
  int planes = 0, plane = 0, row = 0;  ///< how many there are; what comes next
  XXH3_state_t state;
};

FrameDigest::FrameDigest(const AVFrame& frame) : rows_(std::make_unique<Rows>(frame)) {}
FrameDigest::~FrameDigest() = default;
FrameDigest::FrameDigest(FrameDigest&&) noexcept = default;

void FrameDigest::reach(int plane, int end) {
  for (; rows_->plane < std::min(plane, rows_->planes); ++rows_->plane, rows_->row = 0) {
    rows_->addUpTo(rows_->rowsOf(rows_->plane));
  }
  if (rows_->plane == plane && plane < rows_->planes) rows_->addUpTo(end);
}

std::uint64_t FrameDigest::value() {
  if (rows_->description == nullptr) return 0;
  reach(rows_->planes, 0);
  const AVFrame& frame = rows_->frame;
  if (rows_->isPalette && frame.data[1] != nullptr) rows_->add(frame.data[1], AVPALETTE_SIZE);
  const std::uint64_t digest = XXH3_64bits_digest(&rows_->state);
  return digest != 0 ? digest : 1;
}

}  // namespace movie
