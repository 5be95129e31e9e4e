#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace lanmira {

// Deleting files the way the desktop does: to the freedesktop trash through GIO, or for
// good. One confirmation covers the whole list; a file on a volume without a trash is
// deleted only when the user agrees.
class FileDeleter {
public:
    enum class Outcome { Deleted, NoTrash, Failed };

    static Outcome moveToTrash(const QString& path, QString* error = nullptr);
    static Outcome deleteForGood(const QString& path, QString* error = nullptr);

    // Asks, then deletes. False when the user declined or cancelled, or nothing could be
    // deleted; the caller then checks which files are really gone.
    static bool deletePaths(QWidget* parent, const QStringList& paths, bool forGood);

    // Answers the message boxes instead of showing them: gets the text and the
    // QMessageBox::StandardButtons offered, returns the button chosen. An empty handler
    // brings the real boxes back.
    using QuestionHandler = std::function<int(const QString& text, int buttons)>;
    static void setQuestionHandler(QuestionHandler handler);
};

} // namespace lanmira
