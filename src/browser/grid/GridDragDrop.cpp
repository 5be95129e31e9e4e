#include "browser/grid/GridDragDrop.h"

#include "browser/BrowserList.h"
#include "browser/fileops/DropRules.h"
#include "browser/fileops/FileListData.h"
#include "browser/fileops/FileOperations.h"
#include "browser/grid/GridSelection.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <utility>

namespace lanmira {

void GridDragDrop::startDrag() {
    const std::vector<QString> paths = m_list.selectedPaths();
    if (paths.empty())
        return;
    // The clipboard's formats, so a file manager takes the drop as it takes a paste.
    std::unique_ptr<QMimeData> mime =
        FileListData::encode(QStringList(paths.begin(), paths.end()), effect::kCopyAndLink);
    auto* drag = new QDrag(&m_view); // parented: Qt may still use it while exec() returns
    drag->setMimeData(mime.release());
    m_selection.beginDrag();
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction);
    m_selection.endDrag();
    drag->deleteLater();
}

std::uint32_t GridDragDrop::effect(const QDropEvent* event) const {
    return DropRules::dragOverEffect(
        !m_list.currentFolder.isEmpty(), FileListData::offersFiles(event->mimeData()),
        m_selection.dragging(), DropRules::keyState(event->modifiers()));
}

void GridDragDrop::dragOver(QDropEvent* event) const {
    const std::uint32_t e = effect(event);
    if (e == effect::kNone) {
        event->ignore();
        return;
    }
    event->setDropAction(DropRules::action(e));
    event->accept();
}

void GridDragDrop::drop(QDropEvent* event) {
    const std::uint32_t e = effect(event);
    if (e == effect::kNone) {
        event->ignore();
        return;
    }
    DropRequest request;
    request.folder = m_list.currentFolder;
    request.files = FileListData::decode(event->mimeData());
    request.effect = e;
    event->setDropAction(DropRules::action(e));
    event->accept();
    post(std::move(request));
}

void GridDragDrop::post(DropRequest request) {
    postMessage(&m_view, msg::BROWSER_DEFERRED_DROP, 0, static_cast<qintptr>(request.effect),
                makePayload(std::move(request)));
}

void GridDragDrop::deferred(PostedMessage& message) {
    // A drop from this view arrives while its drag loop still runs: wait for it to end.
    if (m_selection.dragging()) {
        std::unique_ptr<DropRequest> request = message.takePayload<DropRequest>();
        if (request)
            QTimer::singleShot(50, &m_view, [this, r = *request]() mutable { post(std::move(r)); });
        return;
    }
    if (const DropRequest* request = message.payload<DropRequest>())
        m_fileOps.drop(*request);
}

} // namespace lanmira
