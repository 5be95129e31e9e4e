#include "camera/CaptureHooks.h"

#include "camera/CCameraControlsDlg.h"
#include "dscap/dscap.h"
#include "i18n/i18n.h"
#include "platform/ReceiverRegistry.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>

#include <cstring>

namespace lanmira {

namespace {

void postToReceiver(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    ReceiverRegistry::post(ReceiverRegistry::fromContext(window), static_cast<int>(message),
                           static_cast<quintptr>(wParam), static_cast<qintptr>(lParam));
}

int recordFile(void* /*frameWindow*/, const char* suggested, char* path, std::size_t size) {
    const QString chosen =
        CaptureHooks::askRecordFile(QApplication::activeWindow(), QString::fromUtf8(suggested));
    const QByteArray bytes = chosen.toUtf8();
    if (bytes.isEmpty() || static_cast<std::size_t>(bytes.size()) + 1 > size)
        return 0;
    std::memcpy(path, bytes.constData(), static_cast<std::size_t>(bytes.size()) + 1);
    return 1;
}

int showDialog(void* /*frameWindow*/, dscap_handle camera, int /*command*/) {
    CCameraControlsDlg dialog(camera, i18n_stringW("ids_calvora_camera_controls"),
                              QApplication::activeWindow());
    dialog.exec();
    return 1;
}

} // namespace

void CaptureHooks::install() {
    const dscap_hooks hooks{postToReceiver, recordFile, showDialog};
    dscap_set_hooks(&hooks);
}

QString CaptureHooks::withVideoExtension(const QString& path, bool matroska) {
    if (path.isEmpty() || !QFileInfo(path).suffix().isEmpty())
        return path;
    return path + (matroska ? QStringLiteral(".mkv") : QStringLiteral(".mp4"));
}

QString CaptureHooks::askRecordFile(QWidget* parent, const QString& suggested) {
    const QString mp4 = i18n_stringW("ids_calvora_record_mp4") + QStringLiteral(" (*.mp4)");
    const QString mkv = i18n_stringW("ids_calvora_record_mkv") + QStringLiteral(" (*.mkv)");
    QString filter = mp4;
    const QString chosen =
        QFileDialog::getSaveFileName(parent, i18n_stringW("ids_calvora_record_title"), suggested,
                                     mp4 + QStringLiteral(";;") + mkv, &filter);
    return withVideoExtension(chosen, filter == mkv);
}

} // namespace lanmira
