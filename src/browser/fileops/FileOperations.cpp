#include "browser/fileops/FileOperations.h"

#include "browser/fileops/CTiffJoinDlg.h"
#include "browser/fileops/CTransferDlg.h"
#include "browser/fileops/FileOpQuestions.h"
#include "browser/fileops/LinkMaker.h"
#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "platform/TextFormat.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMimeData>
#include <QWidget>

namespace lanmira {
namespace {

// A report lists this many lines, then how many more there are.
constexpr int kMaxReportLines = 20;

FileOperations::SaveChooser& saveChooser() {
    static FileOperations::SaveChooser chooser;
    return chooser;
}

QByteArray nativeFolder(const QString& folder) {
    QByteArray f = QFile::encodeName(folder);
    while (f.size() > 1 && f.endsWith('/'))
        f.chop(1);
    return f;
}

} // namespace

FileOperations::FileOperations(QWidget* owner) : QObject(owner), m_owner(owner) {
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this,
            [this] { m_clipboardKnown = false; });
}

FileOperations::~FileOperations() {
    // The dialogs are children of the owner; their destructors stop and join the workers.
    delete m_transfer.data();
    delete m_tiff.data();
}

CTransferDlg* FileOperations::transferDialog() const {
    return m_transfer.data();
}

CTiffJoinDlg* FileOperations::tiffDialog() const {
    return m_tiff.data();
}

void FileOperations::setSaveChooser(SaveChooser chooser) {
    saveChooser() = std::move(chooser);
}

void FileOperations::putOnClipboard(const QStringList& paths, std::uint32_t effectWord) {
    if (paths.isEmpty())
        return;
    QGuiApplication::clipboard()->setMimeData(FileListData::encode(paths, effectWord).release());
    m_clipboardKnown = true;
    m_clipboard = {true, effectWord};
}

FileOperations::ClipboardFiles FileOperations::clipboardFiles() {
    if (!m_clipboardKnown) {
        const QMimeData* data = QGuiApplication::clipboard()->mimeData();
        m_clipboard = {};
        if (FileListData::offersFiles(data)) {
            const FileListData files = FileListData::decode(data);
            m_clipboard = {!files.empty(), files.effect};
        }
        m_clipboardKnown = true;
    }
    return m_clipboard;
}

bool FileOperations::canPaste(const QString& folder) {
    return !folder.isEmpty() && m_state == State::Idle && clipboardFiles().hasFiles;
}

bool FileOperations::canPasteShortcut(const QString& folder) {
    const ClipboardFiles c = clipboardFiles();
    return !folder.isEmpty() && m_state == State::Idle && c.hasFiles &&
           (c.effect & effect::kLink) != 0;
}

void FileOperations::paste(const QString& folder) {
    if (!canPaste(folder))
        return;
    const FileListData files = FileListData::decode(QGuiApplication::clipboard()->mimeData());
    if (files.empty()) {
        report(i18n_stringW("ids_lanmira_transfer_notfiles"), files.rejected);
        return;
    }
    const bool move = (files.effect & effect::kMove) != 0;
    startTransfer(move, files, folder, move);
}

void FileOperations::pasteShortcut(const QString& folder) {
    if (!canPasteShortcut(folder))
        return;
    makeLinks(FileListData::decode(QGuiApplication::clipboard()->mimeData()), folder);
}

void FileOperations::drop(const DropRequest& request) {
    if (request.folder.isEmpty() || m_state != State::Idle)
        return;
    switch (request.effect) {
    case effect::kCopy:
    case effect::kMove:
        startTransfer(request.effect == effect::kMove, request.files, request.folder, false);
        return;
    case effect::kLink:
        makeLinks(request.files, request.folder);
        return;
    default:
        return;
    }
}

void FileOperations::startTransfer(bool move, const FileListData& files, const QString& folder,
                                   bool emptyClipboardAfter) {
    if (files.empty()) {
        report(i18n_stringW("ids_lanmira_transfer_notfiles"), files.rejected);
        return;
    }
    m_state = State::Transferring;
    m_rejected = files.rejected;
    m_emptyClipboardAfter = emptyClipboardAfter;
    m_pasted = files.paths;
    m_transfer = new CTransferDlg(move ? TransferEngine::Mode::Move : TransferEngine::Mode::Copy,
                                  files.paths, nativeFolder(folder), m_owner);
    connect(m_transfer, &CTransferDlg::transferDone, this, &FileOperations::transferDone);
    m_transfer->start();
}

void FileOperations::transferDone() {
    CTransferDlg* dialog = m_transfer.data();
    if (!dialog)
        return;
    const TransferEngine::Result result = dialog->result();
    dialog->deleteLater();
    m_transfer = nullptr;
    m_state = State::Idle;

    // A cut pastes once: the files have left the place the clipboard names. Only our
    // list is dropped; something copied since stays.
    if (m_emptyClipboardAfter && result.ok()) {
        QClipboard* clipboard = QGuiApplication::clipboard();
        if (FileListData::decode(clipboard->mimeData()).paths == m_pasted)
            clipboard->clear();
        m_clipboardKnown = false;
    }
    QStringList lines;
    for (const TransferEngine::Failure& f : result.failures)
        lines.append(f.path + QStringLiteral(": ") + f.reason);
    if (!lines.isEmpty())
        report(i18n_stringW("ids_lanmira_transfer_failed"), lines);
    if (!m_rejected.isEmpty())
        report(i18n_stringW("ids_lanmira_transfer_notfiles"), m_rejected);
    m_rejected.clear();
    Q_EMIT operationDone();
}

void FileOperations::makeLinks(const FileListData& files, const QString& folder) {
    if (files.empty()) {
        report(i18n_stringW("ids_lanmira_transfer_notfiles"), files.rejected);
        return;
    }
    const LinkMaker::Result r =
        LinkMaker::makeLinks(files.paths, nativeFolder(folder), [this](const QString& name) {
            const auto answer = FileOpQuestions::ask(
                m_owner, FileOpQuestions::Kind::Replace,
                formatText(i18n_stringW("ids_calvora_browse_shutcut"), {name}));
            return answer == FileOpQuestions::Yes  ? LinkMaker::Answer::Yes
                   : answer == FileOpQuestions::No ? LinkMaker::Answer::No
                                                   : LinkMaker::Answer::Cancel;
        });
    if (!r.failed.isEmpty())
        report(i18n_stringW("ids_lanmira_link_failed"), r.failed);
    if (!files.rejected.isEmpty())
        report(i18n_stringW("ids_lanmira_transfer_notfiles"), files.rejected);
    Q_EMIT operationDone();
}

void FileOperations::report(const QString& heading, const QStringList& lines) {
    if (lines.isEmpty())
        return;
    QString text = heading;
    for (int k = 0; k < lines.size() && k < kMaxReportLines; ++k)
        text += u'\n' + lines[k];
    if (lines.size() > kMaxReportLines)
        text += u'\n' + formatText(i18n_stringW("ids_lanmira_transfer_more"),
                                   {static_cast<int>(lines.size() - kMaxReportLines)});
    FileOpQuestions::ask(m_owner, FileOpQuestions::Kind::Report, text);
}

QString FileOperations::tiffFilter() {
    QStringList patterns;
    for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row && row->ext; ++row) {
        if (row->format == IMAGELIB_FMT_TIFF)
            patterns.append(QStringLiteral("*.") + QString::fromUtf8(row->ext));
    }
    const ImageLibFmtInfo* info = ImageLib_GetFmtInfo(IMAGELIB_FMT_TIFF);
    const QString name =
        info && info->name ? QString::fromUtf8(info->name) : QStringLiteral("TIFF");
    return formatText(QStringLiteral("%s (%s)"), {name, patterns.join(u' ')});
}

void FileOperations::multiPageTiff(std::vector<TiffJoiner::Source> sources) {
    if (sources.empty() || m_state != State::Idle)
        return;
    const QString filter = tiffFilter();
    QString output;
    if (saveChooser()) {
        output = saveChooser()(filter);
    } else {
        QFileDialog dialog(m_owner, QString(), QDir::currentPath(), filter);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setDefaultSuffix(QStringLiteral("tif"));
        if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty())
            output = dialog.selectedFiles().front();
    }
    if (!output.isEmpty())
        multiPageTiff(std::move(sources), output);
}

void FileOperations::multiPageTiff(std::vector<TiffJoiner::Source> sources, const QString& output) {
    if (sources.empty() || m_state != State::Idle)
        return;
    m_state = State::Joining;
    m_tiff = new CTiffJoinDlg(std::move(sources), output, m_owner);
    connect(m_tiff, &CTiffJoinDlg::joinDone, this, [this] {
        if (m_tiff)
            m_tiff->deleteLater();
        m_tiff = nullptr;
        m_state = State::Idle;
        Q_EMIT operationDone();
    });
    m_tiff->show();
    m_tiff->start();
}

} // namespace lanmira
