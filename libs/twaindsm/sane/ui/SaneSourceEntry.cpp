// The SANE source plug-in: DS_Entry, with the widgets it needs when the program that
// loaded it runs a Qt application.

#include "sane/SaneSource.h"
#include "sane/ui/ScanDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QMetaObject>
#include <QPointer>
#include <QWidget>

#include <thread>

namespace {

using twaindsm::SourceToolkit;

// The dialog is a child of the application's window, which may be destroyed first: the
// session's hold on it must not outlive it.
class DialogHolder final : public twaindsm::SourceUi {
public:
    explicit DialogHolder(twaindsm::ScanDialog* dialog) : m_dialog(dialog) {}
    ~DialogHolder() override { delete m_dialog.data(); }
    void scanFinished(const std::string& error, const std::string& detail) override {
        if (m_dialog)
            m_dialog->scanFinished(error, detail);
    }

private:
    QPointer<twaindsm::ScanDialog> m_dialog;
};

// Sources are handed their parent window as a QWidget pointer by this program; anything
// else is ignored.
QWidget* parentWidget(void* parent) {
    auto* object = static_cast<QObject*>(parent);
    return object && object->isWidgetType() ? static_cast<QWidget*>(object) : nullptr;
}

SourceToolkit makeToolkit() {
    SourceToolkit toolkit;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return toolkit;
    toolkit.makeDialog = [](twaindsm::SaneSession& session, void* parent) {
        return std::unique_ptr<twaindsm::SourceUi>(
            new DialogHolder(new twaindsm::ScanDialog(session, parentWidget(parent))));
    };
    toolkit.reportError = [](const std::string& error, const std::string& detail, void* parent) {
        QString text = twaindsm::scanText(error.c_str());
        text.replace(QStringLiteral("%s"), QString::fromStdString(detail));
        QMessageBox::warning(parentWidget(parent), twaindsm::scanText("ids_lanmira_scan_title"),
                             text);
    };
    toolkit.post = [](std::function<void()> fn) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(fn),
                                  Qt::QueuedConnection);
    };
    toolkit.runAside = [](const std::function<void()>& work) {
        QEventLoop loop;
        std::thread worker([&] {
            work();
            QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
        });
        // Painting and timers go on; clicks and keys wait, so nothing asks the source for
        // more while it is busy.
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        worker.join();
    };
    return toolkit;
}

twaindsm::SaneSource& source() {
    static twaindsm::SaneSource instance(makeToolkit());
    return instance;
}

} // namespace

extern "C" __attribute__((visibility("default"))) TW_UINT16
DS_Entry(TW_IDENTITY* pOrigin, TW_UINT32 DG, TW_UINT16 DAT, TW_UINT16 MSG, TW_MEMREF pData) {
    return source().entry(pOrigin, DG, DAT, MSG, pData);
}
