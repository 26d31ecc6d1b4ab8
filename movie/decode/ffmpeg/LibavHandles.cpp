#include "movie/decode/ffmpeg/LibavHandles.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {

void LibavDeleter::operator()(AVCodecContext* context) const {
  avcodec_free_context(&context);
}
void LibavDeleter::operator()(AVCodecParameters* parameters) const {
  avcodec_parameters_free(&parameters);
}
void LibavDeleter::operator()(AVFrame* frame) const {
  av_frame_free(&frame);
}
void LibavDeleter::operator()(AVPacket* packet) const {
  av_packet_free(&packet);
}

}  // namespace movie
