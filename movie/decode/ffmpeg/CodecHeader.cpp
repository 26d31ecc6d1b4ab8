#include "movie/decode/ffmpeg/CodecHeader.h"

#include "movie/atoms/AtomTypes.h"
#include "movie/decode/DecoderModule.h"
#include "movie/decode/ffmpeg/DemuxedDescription.h"
#include "movie/decode/ffmpeg/EverydayDescription.h"

namespace movie {

tl::expected<CodecHeader, Clause> readCodecHeader(FourCC majorBrand, const ImageDescription& description) {
  CodecHeader header;
  header.parameters = everydayParameters(description);
  if (header.parameters == nullptr) {
    static const auto demux =
        exportedBy<decltype(demuxDescription)>("movie-ffmpeg-demuxer.so", "lumacheckDemuxedDescriptionReader");
    if (!demux) return tl::make_unexpected(demux.error().why);
    ImageDescription colorless = description;
    while (colorless.removeExtension(code::colr) == noErr) continue;
    TRY(header, (*demux)(majorBrand, colorless));
  }
  header.fullRange = description.nclxFullRange();
  return header;
}

}  // namespace movie
