#include "movie/decode/ffmpeg/FrameMemory.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include <sys/mman.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/buffer.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace movie {
namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;
constexpr std::size_t smallestPicture = std::size_t{1} << 20;  // bytes; below, small pages do as well
constexpr std::size_t planeEnd = 256;                          // what decoders may read or write past a plane

std::size_t roundedUp(std::size_t size, std::size_t unit) {
  return (size + unit - 1) / unit * unit;
}

void unmap(void* end, std::uint8_t* data) {
  ::munmap(data, static_cast<std::size_t>(static_cast<std::uint8_t*>(end) - data));
}

/// A piece that begins and ends at large pages.
AVBufferRef* mapped(void* /*unused*/, std::size_t wanted) {
  const std::size_t size = roundedUp(wanted, largePage);
  void* const whole = ::mmap(nullptr, size + largePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (whole == MAP_FAILED) return nullptr;
  auto* const begin = static_cast<std::uint8_t*>(whole);
  const std::size_t before =
      roundedUp(reinterpret_cast<std::uintptr_t>(begin), largePage) - reinterpret_cast<std::uintptr_t>(begin);
  if (before > 0) ::munmap(begin, before);
  if (before < largePage) ::munmap(begin + before + size, largePage - before);
  std::uint8_t* const data = begin + before;
  // Where there are no large pages, small ones do.
  ::madvise(data, size, MADV_HUGEPAGE);
  AVBufferRef* const buffer = av_buffer_create(data, wanted, &unmap, data + size, 0);
  if (buffer == nullptr) ::munmap(data, size);
  return buffer;
}

struct Layout {
  std::array<int, 4> linesizes{};
  std::array<std::size_t, 4> offsets{};
  std::size_t size = 0;
};

/// As libav's own buffers are laid out, in one piece. None for formats that are more than planes of samples.
std::optional<Layout> layoutOf(AVCodecContext& context, const AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
  constexpr std::uint64_t unusual = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM;
  if (descriptor == nullptr || (descriptor->flags & unusual) != 0) return std::nullopt;

  int width = frame.width, height = frame.height;
  std::array<int, AV_NUM_DATA_POINTERS> alignment{};
  avcodec_align_dimensions2(&context, &width, &height, alignment.data());
  Layout layout;
  for (bool aligned = false; !aligned; width += width & ~(width - 1)) {
    if (av_image_fill_linesizes(layout.linesizes.data(), format, width) < 0) return std::nullopt;
    aligned = true;
    for (std::size_t i = 0; i < 4; ++i) aligned = aligned && layout.linesizes[i] % alignment[i] == 0;
  }
  std::array<std::ptrdiff_t, 4> strides{};
  std::copy(layout.linesizes.begin(), layout.linesizes.end(), strides.begin());
  std::array<std::size_t, 4> sizes{};
  if (av_image_fill_plane_sizes(sizes.data(), format, height, strides.data()) < 0) return std::nullopt;
  for (std::size_t i = 0; i < 4 && sizes[i] != 0; ++i) {
    layout.offsets[i] = layout.size;
    layout.size += roundedUp(sizes[i] + planeEnd, planeEnd);
  }
  return layout;
}

}  // namespace

FrameMemory::~FrameMemory() {
  av_buffer_pool_uninit(&pool_);
}

void FrameMemory::serve(AVCodecContext& context) {
  context.opaque = this;
  context.get_buffer2 = &getBuffer;
#if LIBAVCODEC_VERSION_MAJOR < 60
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  context.thread_safe_callbacks = 1;
#pragma GCC diagnostic pop
#endif
}

AVBufferRef* FrameMemory::take(std::size_t size) {
  const std::lock_guard lock(mutex_);
  if (pool_ == nullptr || size != size_) {
    av_buffer_pool_uninit(&pool_);
    pool_ = av_buffer_pool_init2(size, nullptr, &mapped, nullptr);
    size_ = size;
  }
  return pool_ == nullptr ? nullptr : av_buffer_pool_get(pool_);
}

int FrameMemory::getBuffer(AVCodecContext* context, AVFrame* frame, int flags) {
  const bool ours = (context->codec->capabilities & AV_CODEC_CAP_DR1) != 0;
  const auto layout = ours ? layoutOf(*context, *frame) : std::nullopt;
  if (!layout || layout->size < smallestPicture) return avcodec_default_get_buffer2(context, frame, flags);
  frame->buf[0] = static_cast<FrameMemory*>(context->opaque)->take(layout->size);
  if (frame->buf[0] == nullptr) return AVERROR(ENOMEM);
  for (std::size_t i = 0; i < 4; ++i) {
    const bool there = layout->linesizes[i] != 0;
    frame->data[i] = there ? frame->buf[0]->data + layout->offsets[i] : nullptr;
    frame->linesize[i] = layout->linesizes[i];
  }
  frame->extended_data = frame->data;
  return 0;
}

}  // namespace movie
