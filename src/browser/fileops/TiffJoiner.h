#pragma once

#include <QString>

#include <atomic>
#include <functional>
#include <vector>

namespace lanmira {

// Joins every page of several pictures into one multi-page TIFF file. The pages go into a
// hidden file beside the output, which takes the output's name only when the run ends
// well: a cancelled or failed run leaves no half file under that name.
class TiffJoiner {
public:
    struct Source {
        QString name;      // shown in the questions
        QString imagePath; // what is decoded (a link's target)
    };
    enum class Answer { Ok, Cancel };
    enum class Outcome { Written, Cancelled, Nothing };

    struct Hooks {
        // An OK/Cancel warning with a finished text; unset: OK.
        std::function<Answer(const QString& text)> ask;
        // Percent of the sources done.
        std::function<void(int percent)> progress;
        const std::atomic<bool>* cancel = nullptr;
        int pauseMs = 100; // after each source, so the bar can be followed
    };

    struct Result {
        Outcome outcome = Outcome::Nothing;
        int pages = 0;
    };

    static Result join(const std::vector<Source>& sources, const QString& output,
                       const Hooks& hooks);
};

} // namespace lanmira
