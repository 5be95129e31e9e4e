#include "dscap/record/VideoRecorder.h"

#include <sys/resource.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using dscap::VideoRecorder;

constexpr std::int64_t kFrameStepNs = 33'333'333;

struct TempDir {
    fs::path path = fs::temp_directory_path() /
                    ("lanmira-record-" + std::to_string(::getpid()) + "-" + std::to_string(next++));
    TempDir() { fs::create_directories(path); }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    static inline std::atomic<int> next{0};
};

// A diagonal gradient that slides a few pixels a frame, in rows with some padding.
struct Picture {
    Picture(int w, int h) : width(w), height(h), stride(w * 3 + 5), bgr(stride * h) {}
    void paint(int frame) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const int v = x + y + 4 * frame;
                std::uint8_t* p = &bgr[static_cast<std::size_t>(y) * stride + 3 * x];
                p[0] = static_cast<std::uint8_t>(v);
                p[1] = static_cast<std::uint8_t>(v / 2 + y);
                p[2] = static_cast<std::uint8_t>(255 - v / 3);
            }
        }
    }
    bool pushTo(VideoRecorder& recorder, std::int64_t timestampNs) const {
        return recorder.push(bgr.data(), stride, timestampNs);
    }
    int width;
    int height;
    int stride;
    std::vector<std::uint8_t> bgr;
};

std::unique_ptr<VideoRecorder> openRecorder(const fs::path& path, int width, int height) {
    std::string error;
    auto recorder = VideoRecorder::open({path, width, height, 30.0}, error);
    EXPECT_TRUE(recorder) << error;
    return recorder;
}

// Offers each frame again while the queue is full, so that none is left out.
void pushFrames(VideoRecorder& recorder, Picture& picture, int count) {
    for (int i = 0; i < count; ++i) {
        picture.paint(i);
        while (!picture.pushTo(recorder, i * kFrameStepNs)) {
            ASSERT_FALSE(recorder.failed()) << recorder.error();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
}

std::string run(const std::string& command) {
    std::string out;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
            out.append(buffer, n);
        ::pclose(pipe);
    }
    return out;
}

std::vector<std::string> ffprobe(const std::string& arguments, const fs::path& file) {
    std::istringstream text(
        run("ffprobe -v error -select_streams v:0 " + arguments + " '" + file.string() + "'"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        if (!line.empty())
            lines.push_back(line);
    }
    return lines;
}

// The video's stream and container facts; an absent one reads as "".
std::map<std::string, std::string> describe(const fs::path& file) {
    std::map<std::string, std::string> facts;
    for (const std::string& line :
         ffprobe("-count_frames -show_entries stream=codec_name,width,height,nb_read_frames:"
                 "format=format_name,duration -of default=noprint_wrappers=1",
                 file)) {
        if (const auto eq = line.find('='); eq != std::string::npos)
            facts[line.substr(0, eq)] = line.substr(eq + 1);
    }
    return facts;
}

int frameCount(const fs::path& file) {
    return std::atoi(describe(file)["nb_read_frames"].c_str());
}

// Presentation times in seconds, of every frame or of the keyframes.
std::vector<double> frameTimes(const fs::path& file, bool keyframesOnly) {
    std::vector<double> times;
    for (const std::string& line : ffprobe(std::string(keyframesOnly ? "-skip_frame nokey " : "") +
                                               "-show_entries frame=pts_time -of csv=p=0",
                                           file))
        times.push_back(std::stod(line));
    return times;
}

struct FileCase {
    const char* name;
    int width;
    int height;
    int frames;
    const char* format;
    const char* fileSize;
};

class RecordedFile : public testing::TestWithParam<FileCase> {};

TEST_P(RecordedFile, PlaysBackWithEveryFrameAndAKeyframeEachSecond) {
    const FileCase& c = GetParam();
    TempDir dir;
    const fs::path file = dir.path / c.name;
    auto recorder = openRecorder(file, c.width, c.height);
    ASSERT_TRUE(recorder);
    Picture picture(c.width, c.height);
    pushFrames(*recorder, picture, c.frames);
    recorder->close();
    ASSERT_FALSE(recorder->failed()) << recorder->error();
    EXPECT_EQ(recorder->framesWritten(), c.frames);

    auto facts = describe(file);
    EXPECT_EQ(facts["format_name"], c.format);
    EXPECT_EQ(facts["codec_name"], "h264");
    EXPECT_EQ(facts["width"] + "x" + facts["height"], c.fileSize);
    EXPECT_EQ(facts["nb_read_frames"], std::to_string(c.frames));
    EXPECT_NEAR(std::atof(facts["duration"].c_str()), c.frames / 30.0, 0.1);

    const std::vector<double> keys = frameTimes(file, true);
    ASSERT_EQ(keys.size(), static_cast<std::size_t>((c.frames + 29) / 30));
    for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_NEAR(keys[i] - keys[0], static_cast<double>(i), 0.04);
}

INSTANTIATE_TEST_SUITE_P(
    Containers, RecordedFile,
    testing::Values(FileCase{"clip.mp4", 1296, 972, 90, "mov,mp4,m4a,3gp,3g2,mj2", "1296x972"},
                    FileCase{"clip.MKV", 1296, 972, 90, "matroska,webm", "1296x972"},
                    FileCase{"odd.mp4", 641, 481, 30, "mov,mp4,m4a,3gp,3g2,mj2", "640x480"}),
    [](const auto& row) { return std::to_string(row.index); });

TEST(VideoRecorder, KeepsColoursAndBumpsTimestampsThatDoNotAdvance) {
    TempDir dir;
    const fs::path file = dir.path / "bands.mp4";
    // Blue, green, red and mid grey bands, 64 pixels wide, given as BGR.
    const std::uint8_t bands[4][3] = {{220, 30, 30}, {30, 220, 30}, {30, 30, 220}, {128, 128, 128}};
    Picture picture(256, 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 256; ++x)
            std::copy_n(bands[x / 64], 3, &picture.bgr[y * picture.stride + 3 * x]);
    auto recorder = openRecorder(file, 256, 64);
    ASSERT_TRUE(recorder);
    // Repeats, a step back and a normal step; every frame must stay, in order.
    const std::int64_t stampsMs[] = {5000, 5000, 5000, 5010, 5004, 5040};
    for (const std::int64_t ms : stampsMs)
        ASSERT_TRUE(picture.pushTo(*recorder, ms * 1'000'000));
    recorder->close();

    const std::vector<double> times = frameTimes(file, false);
    const double expected[] = {0, 0.001, 0.002, 0.010, 0.011, 0.040};
    ASSERT_EQ(times.size(), 6u);
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(times[i] - times[0], expected[i], 0.0005) << "frame " << i;

    const std::string decoded =
        run("ffmpeg -v error -i '" + file.string() + "' -frames:v 1 -f rawvideo -pix_fmt bgr24 -");
    ASSERT_EQ(decoded.size(), 256u * 64 * 3);
    for (int band = 0; band < 4; ++band) {
        for (int ch = 0; ch < 3; ++ch) {
            const auto v = static_cast<std::uint8_t>(decoded[(32 * 256 + band * 64 + 32) * 3 + ch]);
            EXPECT_NEAR(v, bands[band][ch], 8) << "band " << band << " channel " << ch;
        }
    }
}

int waitForChild(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(VideoRecorder, FinishedFragmentsSurviveACrash) {
    TempDir dir;
    const fs::path file = dir.path / "crash.mp4";
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        std::string error;
        auto recorder = VideoRecorder::open({file, 1296, 972, 30.0}, error);
        Picture picture(1296, 972);
        if (recorder)
            pushFrames(*recorder, picture, 75); // 2.5 s of video
        // Die once the fragment of the second second is finished (the keyframe at 2 s has
        // reached the muxer); later frames are still in the encoder and in the open
        // fragment, as a real crash would find them.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (recorder && recorder->framesWritten() <= 60 &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ::_exit(recorder ? 1 : 2); // no close, no destructors: no trailer
    }
    ASSERT_EQ(waitForChild(child), 1);
    EXPECT_EQ(describe(file)["codec_name"], "h264");
    EXPECT_GE(frameCount(file), 60);
}

// A file size limit makes writes fail part-way through, as a disk filling up does.
TEST(VideoRecorder, AWriteErrorStopsTheRecordingAndKeepsWhatWasWritten) {
    TempDir dir;
    const fs::path whole = dir.path / "whole.mp4";
    const fs::path cut = dir.path / "cut.mp4";
    Picture picture(320, 240);
    if (auto recorder = openRecorder(whole, 320, 240))
        pushFrames(*recorder, picture, 90);
    const auto limit = static_cast<rlim_t>(fs::file_size(whole) * 2 / 3);

    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{limit, limit};
        ::setrlimit(RLIMIT_FSIZE, &small);
        std::string error;
        auto recorder = VideoRecorder::open({cut, 320, 240, 30.0}, error);
        for (int i = 0; recorder && i < 200 && !recorder->failed(); ++i) {
            picture.paint(i);
            while (!picture.pushTo(*recorder, i * kFrameStepNs) && !recorder->failed())
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        if (!recorder)
            ::_exit(2);
        recorder->close();
        const bool told =
            recorder->error() == "Cannot write the file " + cut.string() + ": File too large.";
        const bool refused = !picture.pushTo(*recorder, 0);
        ::_exit(recorder->failed() && told && refused ? 0 : 3);
    }
    EXPECT_EQ(waitForChild(child), 0);
    EXPECT_GE(frameCount(cut), 30);
}

struct RefusalCase {
    const char* name;
    const char* path; // below a fresh folder unless absolute
    int width;
    const char* error; // %s stands for the whole path
};

class Refusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(Refusal, OpenFailsWithASentence) {
    const RefusalCase& c = GetParam();
    TempDir dir;
    std::ofstream(dir.path / "plain-file") << "x";
    const fs::path file = dir.path / c.path;
    std::string expected = c.error;
    if (const auto at = expected.find("%s"); at != std::string::npos)
        expected.replace(at, 2, file.string());

    std::string error;
    EXPECT_FALSE(VideoRecorder::open({file, c.width, 240, 30.0}, error));
    EXPECT_EQ(error, expected);
}

// A full disk is told at once: the header goes out when the recording starts.
INSTANTIATE_TEST_SUITE_P(
    Cases, Refusal,
    testing::Values(RefusalCase{"MissingFolder", "gone/clip.mp4", 320,
                                "Cannot create the file %s: No such file or directory."},
                    RefusalCase{"FileAsFolder", "plain-file/clip.mkv", 320,
                                "Cannot create the file %s: Not a directory."},
                    RefusalCase{"FullDisk", "/dev/full", 320, "The disk is full."},
                    RefusalCase{"TooNarrow", "narrow.mp4", 1,
                                "A video of 1 x 240 pixels cannot be recorded."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(VideoRecorder, AFullQueueDropsFramesAndCloseEndsEverything) {
    TempDir dir;
    auto recorder = openRecorder(dir.path / "burst.mkv", 1296, 972);
    ASSERT_TRUE(recorder);
    // Two pictures of noise, which no encoder gets through quickly.
    std::vector<Picture> noise(2, Picture(1296, 972));
    std::uint32_t seed = 1;
    for (Picture& picture : noise)
        for (std::uint8_t& byte : picture.bgr)
            byte = static_cast<std::uint8_t>((seed = seed * 1664525u + 1013904223u) >> 24);
    EXPECT_FALSE(recorder->push(nullptr, noise[0].stride, 0));
    EXPECT_FALSE(recorder->push(noise[0].bgr.data(), 1296 * 3 - 1, 0));

    // As fast as the caller can: the preview side never waits, so frames drop.
    int pushed = 0;
    while (recorder->framesDropped() < 3 && pushed < 300) {
        noise[pushed % 2].pushTo(*recorder, pushed * kFrameStepNs);
        ++pushed;
    }
    recorder->close();
    recorder->close();
    EXPECT_FALSE(recorder->failed()) << recorder->error();
    EXPECT_GT(recorder->framesDropped(), 0);
    EXPECT_EQ(recorder->framesWritten() + recorder->framesDropped(), pushed);
    EXPECT_EQ(frameCount(dir.path / "burst.mkv"), recorder->framesWritten());

    EXPECT_FALSE(noise[0].pushTo(*recorder, pushed * kFrameStepNs));
    EXPECT_EQ(recorder->framesWritten() + recorder->framesDropped(), pushed);
}

} // namespace
