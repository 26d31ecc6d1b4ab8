#include "movie/decode/DecoderModule.h"
#include "movie/decode/ffmpeg/DemuxerModule.h"

extern "C" __attribute__((visibility("default"))) movie::DemuxedDescriptionReader lumacheckDemuxedDescriptionReader(
    int interfaceVersion) {
  return interfaceVersion == movie::decoderInterfaceVersion ? &movie::demuxDescription : nullptr;
}
