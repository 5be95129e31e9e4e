#include "browser/FileDeleter.h"

#include "browser/FileNames.h"
#include "i18n/i18n.h"
#include "platform/TextFormat.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <QFile>
#include <QMessageBox>

#include <cerrno>
#include <cstring>
#include <memory>

namespace lanmira {

namespace {

struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct GErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using FilePtr = std::unique_ptr<GFile, GObjectUnref>;
using ErrorPtr = std::unique_ptr<GError, GErrorFree>;

FileDeleter::QuestionHandler& questionHandler() {
    static FileDeleter::QuestionHandler handler;
    return handler;
}

int ask(QWidget* parent, QMessageBox::Icon icon, const QString& text,
        QMessageBox::StandardButtons buttons) {
    if (const auto& handler = questionHandler())
        return handler(text, static_cast<int>(buttons.toInt()));
    QMessageBox box(icon, i18n_stringW("ids_lanmira_delete_title"), text, buttons, parent);
    const int answer = box.exec();
    // Without a window manager nobody gives the keyboard back to the window the box
    // belonged to; with one this is what it does anyway.
    if (parent)
        parent->window()->activateWindow();
    return answer;
}

QString fileNameOf(const QString& path) {
    return path.mid(path.lastIndexOf(u'/') + 1);
}

// The browser's items are files; a folder that took a file's name meanwhile is left alone.
bool isFolder(const QByteArray& path, QString* error) {
    struct stat st {};
    if (::lstat(path.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
        return false;
    if (error)
        *error = QString::fromLocal8Bit(std::strerror(EISDIR));
    return true;
}

FileDeleter::Outcome outcomeOf(gboolean ok, GError* rawError, QString* error) {
    const ErrorPtr failure(rawError);
    if (ok)
        return FileDeleter::Outcome::Deleted;
    if (failure && g_error_matches(failure.get(), G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED))
        return FileDeleter::Outcome::NoTrash;
    if (error)
        *error = failure ? QString::fromUtf8(failure->message) : QString();
    return FileDeleter::Outcome::Failed;
}

using GioRemove = gboolean (*)(GFile*, GCancellable*, GError**);

// Runs one GIO removal on a file path; folders are refused.
FileDeleter::Outcome removeFile(const QString& path, QString* error, GioRemove remove) {
    const QByteArray encoded = filenames::encode(path);
    if (isFolder(encoded, error))
        return FileDeleter::Outcome::Failed;
    const FilePtr file(g_file_new_for_path(encoded.constData()));
    GError* failure = nullptr;
    const gboolean ok = remove(file.get(), nullptr, &failure);
    return outcomeOf(ok, failure, error);
}

} // namespace

FileDeleter::Outcome FileDeleter::moveToTrash(const QString& path, QString* error) {
    return removeFile(path, error, &g_file_trash);
}

FileDeleter::Outcome FileDeleter::deleteForGood(const QString& path, QString* error) {
    const Outcome outcome = removeFile(path, error, &g_file_delete);
    // Deleting never lacks a trash; "not supported" here is a plain failure.
    return outcome == Outcome::NoTrash ? Outcome::Failed : outcome;
}

bool FileDeleter::deletePaths(QWidget* parent, const QStringList& paths, bool forGood) {
    if (paths.isEmpty())
        return false;
    QString question;
    if (paths.size() == 1) {
        question = formatText(
            i18n_stringW(forGood ? "ids_lanmira_delete_forever" : "ids_lanmira_delete_confirm"),
            {fileNameOf(paths.front())});
    } else {
        question = formatText(i18n_stringW(forGood ? "ids_lanmira_delete_forever_many"
                                                   : "ids_lanmira_delete_confirm_many"),
                              {static_cast<int>(paths.size())});
    }
    if (ask(parent, QMessageBox::Question, question, QMessageBox::Yes | QMessageBox::No) !=
        QMessageBox::Yes)
        return false;

    bool deletedAny = false;
    for (const QString& path : paths) {
        QString error;
        Outcome outcome = forGood ? deleteForGood(path, &error) : moveToTrash(path, &error);
        if (outcome == Outcome::NoTrash) {
            const int answer =
                ask(parent, QMessageBox::Warning,
                    formatText(i18n_stringW("ids_lanmira_delete_notrash"), {fileNameOf(path)}),
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            if (answer == QMessageBox::Cancel)
                break;
            if (answer != QMessageBox::Yes)
                continue;
            outcome = deleteForGood(path, &error);
        }
        if (outcome == Outcome::Deleted) {
            deletedAny = true;
            continue;
        }
        ask(parent, QMessageBox::Warning,
            formatText(i18n_stringW("ids_lanmira_delete_failed"), {fileNameOf(path), error}),
            QMessageBox::Ok);
    }
    return deletedAny;
}

void FileDeleter::setQuestionHandler(QuestionHandler handler) {
    questionHandler() = std::move(handler);
}

} // namespace lanmira
