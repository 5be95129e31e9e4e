#pragma once

#include "browser/fileops/DropRequest.h"
#include "browser/fileops/FileListData.h"
#include "browser/fileops/TiffJoiner.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QWidget;

namespace lanmira {

class CTiffJoinDlg;
class CTransferDlg;

// The browser's file commands over the clipboard and drops: cut, copy, paste, paste as
// link, the transfer with its progress window, and the multi-page TIFF tool. One
// operation at a time; the user-interface thread never waits for one.
class FileOperations final : public QObject {
    Q_OBJECT
public:
    enum class State { Idle, Transferring, Joining };

    explicit FileOperations(QWidget* owner);
    ~FileOperations() override;

    State state() const { return m_state; }

    void putOnClipboard(const QStringList& paths, std::uint32_t effect);

    struct ClipboardFiles {
        bool hasFiles = false;
        std::uint32_t effect = effect::kNone;
    };
    // Read once per change of the clipboard: asking the owner of the X selection is a
    // round trip, and the update handlers ask often.
    ClipboardFiles clipboardFiles();
    bool canPaste(const QString& folder);
    bool canPasteShortcut(const QString& folder);

    void paste(const QString& folder);
    void pasteShortcut(const QString& folder);
    void drop(const DropRequest& request);
    // Asks for the output file, then joins the pages.
    void multiPageTiff(std::vector<TiffJoiner::Source> sources);
    void multiPageTiff(std::vector<TiffJoiner::Source> sources, const QString& output);

    CTransferDlg* transferDialog() const;
    CTiffJoinDlg* tiffDialog() const;

    // For tests: chooses the TIFF output instead of the save dialog (gets the filter).
    using SaveChooser = std::function<QString(const QString& filter)>;
    static void setSaveChooser(SaveChooser chooser);
    // The save dialog's filter from the format table's TIFF rows.
    static QString tiffFilter();

Q_SIGNALS:
    // A transfer, link making or TIFF run has ended (its reports answered).
    void operationDone();

private:
    void startTransfer(bool move, const FileListData& files, const QString& folder,
                       bool emptyClipboardAfter);
    void transferDone();
    void makeLinks(const FileListData& files, const QString& folder);
    void report(const QString& heading, const QStringList& lines);

    QWidget* m_owner;
    State m_state = State::Idle;
    bool m_clipboardKnown = false;
    ClipboardFiles m_clipboard;
    QPointer<CTransferDlg> m_transfer;
    QPointer<CTiffJoinDlg> m_tiff;
    // Of the running transfer.
    QStringList m_rejected;
    bool m_emptyClipboardAfter = false;
    QList<QByteArray> m_pasted;
};

} // namespace lanmira
