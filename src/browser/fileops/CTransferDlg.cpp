#include "browser/fileops/CTransferDlg.h"

#include "browser/fileops/FileOpQuestions.h"
#include "i18n/i18n.h"
#include "platform/TextFormat.h"

#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace lanmira {
namespace {

constexpr int kPollMs = 100;
// Short transfers end before the window would only flash.
constexpr int kShowAfterMs = 400;

} // namespace

CTransferDlg::CTransferDlg(TransferEngine::Mode mode, QList<QByteArray> sources, QByteArray folder,
                           QWidget* parent)
    : QDialog(parent), m_mode(mode), m_sources(std::move(sources)), m_folder(std::move(folder)),
      m_count(new QLabel(this)), m_name(new QLabel(this)), m_bytes(new QLabel(this)),
      m_bar(new QProgressBar(this)),
      m_cancel(new QPushButton(i18n_stringW("ids_lanmira_transfer_cancel"), this)) {
    setObjectName(QStringLiteral("CTransferDlg"));
    setWindowTitle(i18n_stringW("ids_lanmira_transfer_title"));
    setModal(false);
    m_name->setTextFormat(Qt::PlainText);
    m_name->setMinimumWidth(360);
    m_bar->setRange(0, 1000);
    m_cancel->setAccessibleName(m_cancel->text().remove(u'&'));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_count);
    layout->addWidget(m_name);
    layout->addWidget(m_bar);
    layout->addWidget(m_bytes);
    layout->addWidget(m_cancel, 0, Qt::AlignRight);
    connect(m_cancel, &QPushButton::clicked, this, &CTransferDlg::cancelTransfer);

    m_poll.setInterval(kPollMs);
    connect(&m_poll, &QTimer::timeout, this, &CTransferDlg::updateProgress);
    m_showLater.setSingleShot(true);
    m_showLater.setInterval(kShowAfterMs);
    connect(&m_showLater, &QTimer::timeout, this, [this] {
        if (m_state == State::Running)
            show();
    });

    m_hooks.askConflict = [this](const QString& target, bool* all) {
        bool applyToAll = false;
        const int answer = m_question.ask(
            [this, target, &applyToAll] {
                return static_cast<int>(FileOpQuestions::ask(
                    this, FileOpQuestions::Kind::Conflict,
                    formatText(i18n_stringW("ids_lanmira_transfer_conflict"), {target}),
                    &applyToAll));
            },
            FileOpQuestions::Cancel);
        *all = applyToAll;
        switch (answer) {
        case FileOpQuestions::Replace:
            return TransferEngine::Conflict::Replace;
        case FileOpQuestions::Skip:
            return TransferEngine::Conflict::Skip;
        default:
            return TransferEngine::Conflict::Cancel;
        }
    };
}

CTransferDlg::~CTransferDlg() {
    if (m_engine)
        m_engine->cancel();
    m_question.abandon();
    if (m_worker.joinable())
        m_worker.join();
}

void CTransferDlg::setWriteHook(std::function<ssize_t(int, const void*, std::size_t)> hook) {
    m_hooks.write = std::move(hook);
}

void CTransferDlg::start() {
    if (m_state != State::Ready)
        return;
    m_state = State::Running;
    m_engine = std::make_unique<TransferEngine>(m_mode, m_sources, m_folder, m_hooks);
    m_worker = std::thread([this, engine = m_engine.get()] {
        TransferEngine::Result r = engine->run();
        // The dialog outlives the thread (its destructor joins), so the call lands.
        QMetaObject::invokeMethod(
            this, [this, r = std::move(r)]() mutable { workerDone(std::move(r)); },
            Qt::QueuedConnection);
    });
    updateProgress();
    m_poll.start();
    m_showLater.start();
}

void CTransferDlg::cancelTransfer() {
    if (m_state != State::Running || !m_engine)
        return;
    m_engine->cancel();
    m_cancel->setEnabled(false);
}

void CTransferDlg::reject() {
    if (m_state == State::Running)
        cancelTransfer();
    else
        QDialog::reject();
}

void CTransferDlg::updateProgress() {
    if (!m_engine)
        return;
    const TransferEngine::Progress p = m_engine->progress();
    const char* what = m_mode == TransferEngine::Mode::Move ? "ids_lanmira_transfer_moving"
                                                            : "ids_lanmira_transfer_copying";
    m_count->setText(
        formatText(i18n_stringW(what), {std::min(p.filesDone + 1, p.filesTotal), p.filesTotal}));
    m_name->setText(p.current);
    const QLocale locale;
    m_bytes->setText(formatText(
        i18n_stringW("ids_lanmira_transfer_bytes"),
        {locale.formattedDataSize(p.bytesDone), locale.formattedDataSize(p.bytesTotal)}));
    const double part = p.bytesTotal > 0   ? double(p.bytesDone) / double(p.bytesTotal)
                        : p.filesTotal > 0 ? double(p.filesDone) / p.filesTotal
                                           : 0.0;
    m_bar->setValue(static_cast<int>(std::clamp(part, 0.0, 1.0) * 1000));
}

void CTransferDlg::workerDone(TransferEngine::Result result) {
    if (m_state != State::Running)
        return;
    if (m_worker.joinable())
        m_worker.join(); // it has posted its last word: this returns at once
    m_state = State::Finished;
    m_result = std::move(result);
    m_poll.stop();
    m_showLater.stop();
    hide();
    Q_EMIT transferDone();
}

} // namespace lanmira
