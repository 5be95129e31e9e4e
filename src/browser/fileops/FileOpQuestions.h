#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace lanmira {

// The message boxes of the file operations, in one place so tests can answer them.
class FileOpQuestions {
public:
    enum class Kind {
        Conflict, // Replace / Skip / Cancel, with "apply to all"
        Replace,  // Yes / No / Cancel
        OkCancel, // a warning: OK goes on, Cancel stops
        Report,   // what was not done: OK
    };
    enum Answer { Ok = 0, Cancel, Replace, Skip, Yes, No };

    // UI thread. `applyToAll` only for Conflict.
    static Answer ask(QWidget* parent, Kind kind, const QString& text, bool* applyToAll = nullptr);

    // Answers instead of the boxes (tests). Gets the kind and the text; may set applyToAll.
    using Handler = std::function<Answer(Kind kind, const QString& text, bool* applyToAll)>;
    static void setHandler(Handler handler);
};

} // namespace lanmira
