#pragma once

#include "dscap/core/CameraSource.h"
#include "dscap/processing/Histogram.h"
#include "dscap/processing/Image.h"

namespace dscap {

// Everything done to a frame in software. Neutral values leave a stage out.
struct ProcessingParams {
    double gainB = 1.0; // white balance
    double gainG = 1.0;
    double gainR = 1.0;
    int hue = 0;          // degrees, -180..180
    int saturation = 128; // 128 neutral, 0 grey, 255 about twice
    int brightness = 0;   // -64..64, added to the output levels
    int contrast = 0;     // -100..100 around mid grey
    int gamma = 100;      // hundredths; above 100 lifts the mid-tones
    LevelArray low{0, 0, 0, 0};
    LevelArray high{255, 255, 255, 255};
    bool monochrome = false; // grey output: B = G = R
    bool horizontalFlip = false;
    bool verticalFlip = false;
    friend bool operator==(const ProcessingParams&, const ProcessingParams&) = default;
};

// Turns source frames into shown pictures in one pass per frame: white balance and colour
// (hue, saturation), input levels, contrast, brightness and gamma, grey, flips. Not
// thread-safe; one per capture thread.
class FrameProcessor {
public:
    FrameProcessor();
    ~FrameProcessor();
    FrameProcessor(const FrameProcessor&) = delete;
    FrameProcessor& operator=(const FrameProcessor&) = delete;

    // Tables are rebuilt only when the parameters change.
    void setParams(const ProcessingParams& params);
    const ProcessingParams& params() const;

    // Writes the processed picture into out (resized to the frame). With a histogram it is
    // also filled with the values as they enter the level stage (after white balance and
    // colour), so level edges can be set against it; grey is the luma of those values.
    void process(const SourceFrame& in, Image& out, Histogram* histogram);

private:
    struct Tables;
    std::unique_ptr<Tables> tables_;
};

} // namespace dscap
