#include "dscap/record/AvDeleter.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace dscap {

void AvDeleter::operator()(AVCodecContext* context) const {
    avcodec_free_context(&context);
}

void AvDeleter::operator()(AVFormatContext* context) const {
    avformat_free_context(context);
}

void AvDeleter::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

void AvDeleter::operator()(AVIOContext* context) const {
    av_freep(&context->buffer);
    avio_context_free(&context);
}

void AvDeleter::operator()(AVPacket* packet) const {
    av_packet_free(&packet);
}

void AvDeleter::operator()(SwsContext* context) const {
    sws_freeContext(context);
}

} // namespace dscap
