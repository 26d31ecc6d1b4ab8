#include "movie/decode/ffmpeg/CodecHeader.h"

#include "movie/decode/ffmpeg/DemuxerModule.h"
#include "movie/decode/ffmpeg/EverydayDescription.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {

tl::expected<CodecHeader, std::string> readCodecHeader(FourCC majorBrand, const ImageDescription& description) {
  CodecHeader header;
  header.fullRange = description.nclxFullRange();
  header.parameters = everydayParameters(description);
  if (header.parameters != nullptr) return header;

  const auto read = demuxedDescriptionReader();
  if (!read) return tl::make_unexpected(read.error());
  ImageDescription colorless = description;
  while (colorless.removeExtension(fourCC("colr")) == noErr) continue;
  auto demuxed = (*read)(majorBrand, colorless);
  if (!demuxed) return tl::make_unexpected(demuxed.error());
  header.parameters = std::move(demuxed->parameters);
  header.palette = std::move(demuxed->palette);
  return header;
}

}  // namespace movie
