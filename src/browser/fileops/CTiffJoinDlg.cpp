#include "browser/fileops/CTiffJoinDlg.h"

#include "browser/fileops/FileOpQuestions.h"
#include "i18n/i18n.h"

#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace lanmira {

CTiffJoinDlg::CTiffJoinDlg(std::vector<TiffJoiner::Source> sources, QString output, QWidget* parent)
    : QDialog(parent), m_sources(std::move(sources)), m_output(std::move(output)),
      m_bar(new QProgressBar(this)),
      m_cancelButton(new QPushButton(i18n_stringW("ids_lanmira_transfer_cancel"), this)) {
    setObjectName(QStringLiteral("CTiffJoinDlg"));
    setWindowTitle(i18n_stringW("ids_lanmira_tiff_title"));
    m_bar->setRange(0, 100);
    m_bar->setMinimumWidth(320);
    m_cancelButton->setAccessibleName(m_cancelButton->text().remove(u'&'));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_bar);
    layout->addWidget(m_cancelButton, 0, Qt::AlignRight);
    connect(m_cancelButton, &QPushButton::clicked, this, &CTiffJoinDlg::reject);
    auto* poll = new QTimer(this);
    poll->setInterval(100);
    connect(poll, &QTimer::timeout, this, [this] { m_bar->setValue(m_percent.load()); });
    poll->start();
}

CTiffJoinDlg::~CTiffJoinDlg() {
    m_cancel.store(true);
    m_question.abandon();
    if (m_worker.joinable())
        m_worker.join();
}

void CTiffJoinDlg::start() {
    if (m_state != State::Ready)
        return;
    m_state = State::Running;
    m_worker = std::thread([this] {
        TiffJoiner::Hooks hooks;
        hooks.cancel = &m_cancel;
        hooks.pauseMs = m_pauseMs;
        hooks.progress = [this](int percent) { m_percent.store(percent); };
        hooks.ask = [this](const QString& text) {
            const int answer = m_question.ask(
                [this, text] {
                    return static_cast<int>(
                        FileOpQuestions::ask(this, FileOpQuestions::Kind::OkCancel, text));
                },
                FileOpQuestions::Cancel);
            return answer == FileOpQuestions::Ok ? TiffJoiner::Answer::Ok
                                                 : TiffJoiner::Answer::Cancel;
        };
        TiffJoiner::Result r = TiffJoiner::join(m_sources, m_output, hooks);
        QMetaObject::invokeMethod(
            this,
            [this, r] {
                if (m_state != State::Running)
                    return;
                if (m_worker.joinable())
                    m_worker.join();
                m_state = State::Finished;
                m_result = r;
                hide();
                Q_EMIT joinDone();
            },
            Qt::QueuedConnection);
    });
}

void CTiffJoinDlg::reject() {
    if (m_state == State::Running) {
        m_cancel.store(true);
        m_cancelButton->setEnabled(false);
        return;
    }
    QDialog::reject();
}

} // namespace lanmira
