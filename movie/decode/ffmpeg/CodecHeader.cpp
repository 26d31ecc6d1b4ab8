#include "movie/decode/ffmpeg/CodecHeader.h"

#include "movie/atoms/AtomTypes.h"
#include "movie/decode/ffmpeg/DemuxerModule.h"
#include "movie/decode/ffmpeg/EverydayDescription.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {

tl::expected<CodecHeader, Clause> readCodecHeader(FourCC majorBrand, const ImageDescription& description) {
  CodecHeader header;
  header.fullRange = description.nclxFullRange();
  header.parameters = everydayParameters(description);
  if (header.parameters != nullptr) return header;

  TRY(const auto read, demuxedDescriptionReader());
  ImageDescription colorless = description;
  while (colorless.removeExtension(code::colr) == noErr) continue;
  TRY(auto demuxed, read(majorBrand, colorless));
  header.parameters = std::move(demuxed.parameters);
  header.palette = std::move(demuxed.palette);
  return header;
}

}  // namespace movie
