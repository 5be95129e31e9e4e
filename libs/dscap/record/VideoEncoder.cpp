#include "dscap/record/VideoEncoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace dscap {
namespace {

constexpr AVRational kTimeBase{1, 1000};
constexpr std::int64_t kKeyframeIntervalMs = 1000;
// veryfast looks better than superfast at the same cost on a noisy slide (its macroblock
// tree spends fewer bits on sensor noise), and one thread of it keeps 1296 x 972 at 30
// frames a second within about 0.55 of a core, leaving the other core to the live picture,
// with the least delay before frames reach the file. The full sensor at 15 frames a second
// would take veryfast almost two cores; ultrafast on two threads does it in about 0.65.
constexpr double kOneThreadPixelRate = 1296.0 * 972.0 * 30.0 * 1.25;
constexpr char kCrf[] = "21";

bool beyondOneThread(int width, int height, double fps) {
    return width * static_cast<double>(height) * fps > kOneThreadPixelRate;
}

std::string avText(int averror) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(averror, text, sizeof text);
    return text;
}

std::string sizeText(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

bool isMatroska(const std::filesystem::path& path) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext == ".mkv";
}

bool takesYuv420p(const AVCodec* codec) {
    if (!codec->pix_fmts)
        return true;
    for (const AVPixelFormat* f = codec->pix_fmts; *f != AV_PIX_FMT_NONE; ++f) {
        if (*f == AV_PIX_FMT_YUV420P)
            return true;
    }
    return false;
}

// The best encoder first: x264, then whatever else makes H.264 (a hardware one may refuse
// plain frames), then MPEG-4 part 2, which every build has.
std::vector<const AVCodec*> encoderCandidates() {
    std::vector<const AVCodec*> list;
    auto add = [&list](const AVCodec* codec) {
        if (codec && av_codec_is_encoder(codec) && takesYuv420p(codec) &&
            std::find(list.begin(), list.end(), codec) == list.end())
            list.push_back(codec);
    };
    add(avcodec_find_encoder_by_name("libx264"));
    add(avcodec_find_encoder(AV_CODEC_ID_H264));
    add(avcodec_find_encoder(AV_CODEC_ID_MPEG4));
    return list;
}

void configure(AVCodecContext& c, int width, int height, double fps, bool globalHeader) {
    c.width = width;
    c.height = height;
    c.pix_fmt = AV_PIX_FMT_YUV420P;
    c.time_base = kTimeBase;
    c.framerate = av_d2q(fps, 100000);
    // Keyframes come from the timestamps, once a second; this only bounds the gap when
    // frames arrive faster than announced.
    c.gop_size = 2 * static_cast<int>(std::ceil(fps));
    c.thread_count = beyondOneThread(width, height, fps) ? 2 : 1;
    // What swscale produces from camera RGB: BT.601 matrix, limited range, sRGB light.
    c.color_range = AVCOL_RANGE_MPEG;
    c.colorspace = AVCOL_SPC_SMPTE170M;
    c.color_primaries = AVCOL_PRI_BT709;
    c.color_trc = AVCOL_TRC_IEC61966_2_1;
    if (globalHeader)
        c.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
}

void tune(const AVCodec* codec, AVCodecContext& c, AVDictionary** options, double fps) {
    if (std::string_view(codec->name) == "libx264") {
        av_dict_set(options, "preset",
                    beyondOneThread(c.width, c.height, fps) ? "ultrafast" : "veryfast", 0);
        av_dict_set(options, "crf", kCrf, 0);
        // A forced keyframe must be an IDR frame, or a fragment cut there would not play
        // on its own.
        av_dict_set(options, "forced-idr", "1", 0);
    } else if (codec->id == AV_CODEC_ID_MPEG4) {
        c.flags |= AV_CODEC_FLAG_QSCALE;
        c.global_quality = FF_QP2LAMBDA * 3;
    } else {
        c.bit_rate = static_cast<std::int64_t>(0.12 * c.width * c.height * fps);
    }
}

} // namespace

VideoEncoder::VideoEncoder(std::filesystem::path path, int width, int height)
    : path_(std::move(path)), width_(width), height_(height) {}

VideoEncoder::~VideoEncoder() {
    if (headerWritten_)
        finish();
}

std::unique_ptr<VideoEncoder> VideoEncoder::open(const VideoRecorder::Options& options,
                                                 std::string& error) {
    // The library's users should see FFmpeg's errors, not its per-recording chatter.
    static std::once_flag quiet;
    std::call_once(quiet, [] { av_log_set_level(AV_LOG_ERROR); });

    const int width = options.width & ~1;
    const int height = options.height & ~1;
    if (width < 2 || height < 2) {
        error =
            "A video of " + sizeText(options.width, options.height) + " pixels cannot be recorded.";
        return nullptr;
    }
    const double fps =
        std::isfinite(options.fps) && options.fps > 0 ? std::clamp(options.fps, 1.0, 240.0) : 30.0;

    std::unique_ptr<VideoEncoder> e(new VideoEncoder(options.path, width, height));
    AVFormatContext* format = nullptr;
    avformat_alloc_output_context2(&format, nullptr, isMatroska(options.path) ? "matroska" : "mp4",
                                   nullptr);
    e->format_.reset(format);
    e->frame_.reset(av_frame_alloc());
    e->packet_.reset(av_packet_alloc());
    e->converter_.reset(sws_getContext(width, height, AV_PIX_FMT_BGR24, width, height,
                                       AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr,
                                       nullptr));
    if (!e->format_ || !e->frame_ || !e->packet_ || !e->converter_) {
        error = "There is not enough memory to record a video.";
        return nullptr;
    }
    if (!e->openCodec(fps, error) || !e->openFile(error))
        return nullptr;
    return e;
}

bool VideoEncoder::openCodec(double fps, std::string& error) {
    const bool globalHeader = format_->oformat->flags & AVFMT_GLOBALHEADER;
    int lastError = AVERROR_ENCODER_NOT_FOUND;
    for (const AVCodec* codec : encoderCandidates()) {
        AvPtr<AVCodecContext> c(avcodec_alloc_context3(codec));
        if (!c) {
            lastError = AVERROR(ENOMEM);
            continue;
        }
        configure(*c, width_, height_, fps, globalHeader);
        AVDictionary* options = nullptr;
        tune(codec, *c, &options, fps);
        const int ret = avcodec_open2(c.get(), codec, &options);
        av_dict_free(&options);
        if (ret >= 0) {
            codec_ = std::move(c);
            break;
        }
        lastError = ret;
    }
    if (!codec_) {
        error = lastError == AVERROR_ENCODER_NOT_FOUND
                    ? "No video encoder for H.264 or MPEG-4 is available."
                    : "The video encoder cannot record " + sizeText(width_, height_) +
                          " pixels: " + avText(lastError) + ".";
        return false;
    }

    frame_->format = AV_PIX_FMT_YUV420P;
    frame_->width = width_;
    frame_->height = height_;
    stream_ = avformat_new_stream(format_.get(), nullptr);
    if (av_frame_get_buffer(frame_.get(), 0) < 0 || !stream_ ||
        avcodec_parameters_from_context(stream_->codecpar, codec_.get()) < 0) {
        error = "There is not enough memory to record a video.";
        return false;
    }
    stream_->time_base = kTimeBase;
    return true;
}

bool VideoEncoder::openFile(std::string& error) {
    int averror = 0;
    file_ = OutputFile::create(path_, averror);
    if (!file_) {
        error = "Cannot create the file " + path_.string() + ": " + avText(averror) + ".";
        return false;
    }
    format_->pb = file_->io();
    format_->flags |= AVFMT_FLAG_CUSTOM_IO;
    AVDictionary* options = nullptr;
    if (!isMatroska(path_)) {
        // Fragments after every keyframe behind an empty header: each finished fragment is
        // playable even when the program dies before the trailer.
        av_dict_set(&options, "movflags", "frag_keyframe+empty_moov+default_base_moof", 0);
    }
    const int ret = avformat_write_header(format_.get(), &options);
    av_dict_free(&options);
    // The header goes to the disk at once, so that a full disk is told before recording.
    if (ret < 0 || !file_->flushComplete()) {
        failWrite(format_->pb->error < 0 ? format_->pb->error : ret);
        error = error_;
        format_->pb = nullptr;
        file_->discard();
        return false;
    }
    headerWritten_ = true;
    return true;
}

const char* VideoEncoder::codecName() const {
    return codec_->codec->name;
}

bool VideoEncoder::convert(const std::uint8_t* bgr, int stride) {
    if (failed() || finished_)
        return false;
    // The encoder may still hold the previous picture.
    const int ret = av_frame_make_writable(frame_.get());
    if (ret < 0)
        return failEncoder(ret);
    const std::uint8_t* const planes[1] = {bgr};
    const int strides[1] = {stride};
    const int rows =
        sws_scale(converter_.get(), planes, strides, 0, height_, frame_->data, frame_->linesize);
    return rows >= 0 || failEncoder(rows);
}

bool VideoEncoder::encode(std::int64_t timestampNs) {
    if (failed() || finished_)
        return false;
    if (!haveFirst_) {
        haveFirst_ = true;
        firstTimestampNs_ = timestampNs;
        lastPts_ = -1;
    }
    // In double, so that no pair of timestamps can overflow.
    const double ms =
        (static_cast<double>(timestampNs) - static_cast<double>(firstTimestampNs_)) / 1e6;
    std::int64_t pts = std::llround(std::clamp(ms, -1e15, 1e15));
    if (pts <= lastPts_)
        pts = lastPts_ + 1;
    lastPts_ = pts;

    frame_->pts = pts;
    frame_->pict_type = AV_PICTURE_TYPE_NONE;
    if (pts >= nextKeyPts_) {
        frame_->pict_type = AV_PICTURE_TYPE_I;
        nextKeyPts_ = (pts / kKeyframeIntervalMs + 1) * kKeyframeIntervalMs;
    }
    const int ret = avcodec_send_frame(codec_.get(), frame_.get());
    if (ret < 0)
        return failEncoder(ret);
    return writePackets();
}

bool VideoEncoder::writePackets() {
    for (;;) {
        int ret = avcodec_receive_packet(codec_.get(), packet_.get());
        if (ret == AVERROR(EAGAIN) || ret == AVERROR_EOF)
            return true;
        if (ret < 0)
            return failEncoder(ret);
        const bool keyframe = packet_->flags & AV_PKT_FLAG_KEY;
        av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        ret = av_write_frame(format_.get(), packet_.get());
        av_packet_unref(packet_.get());
        // A keyframe closes the previous fragment (or Matroska cluster); putting it on the
        // disk now is what leaves a crashed recording playable up to here.
        if (ret >= 0 && keyframe)
            file_->flushComplete();
        if (format_->pb->error < 0)
            return failWrite(format_->pb->error);
        if (ret < 0)
            return failWrite(ret);
        ++framesWritten_;
    }
}

bool VideoEncoder::finish() {
    if (finished_)
        return !failed();
    finished_ = true;
    if (!failed()) {
        const int ret = avcodec_send_frame(codec_.get(), nullptr);
        if (ret < 0)
            failEncoder(ret);
        else
            writePackets();
    }
    // After an encoder fault the trailer still completes the file; after a write fault
    // nothing more reaches the disk, and the broken tail is cut off instead.
    if (headerWritten_ && !writeFailed_) {
        const int ret = av_write_trailer(format_.get());
        if (ret < 0 || !file_->flushComplete())
            failWrite(format_->pb->error < 0 ? format_->pb->error : ret);
    }
    format_->pb = nullptr;
    if (writeFailed_) {
        file_->closeAtLastComplete();
    } else {
        const int ret = file_->close();
        if (ret < 0)
            failWrite(ret);
    }
    return !failed();
}

bool VideoEncoder::failWrite(int averror) {
    writeFailed_ = true;
    if (error_.empty()) {
        error_ = averror == AVERROR(ENOSPC)
                     ? "The disk is full."
                     : "Cannot write the file " + path_.string() + ": " + avText(averror) + ".";
    }
    return false;
}

bool VideoEncoder::failEncoder(int averror) {
    if (error_.empty())
        error_ = "The video encoder failed: " + avText(averror) + ".";
    return false;
}

} // namespace dscap
