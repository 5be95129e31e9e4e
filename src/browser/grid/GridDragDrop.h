#pragma once

#include <cstdint>

class QDropEvent;
class QWidget;

namespace lanmira {

class BrowserList;
class FileOperations;
class GridSelection;
class PostedMessage;
struct DropRequest;

// Files dragged out of the grid and dropped into the current folder. A drop is not carried
// out at once: it is posted to the view and runs once any drag from the view has ended.
class GridDragDrop {
public:
    GridDragDrop(QWidget& view, BrowserList& list, GridSelection& selection,
                 FileOperations& fileOps)
        : m_view(view), m_list(list), m_selection(selection), m_fileOps(fileOps) {}

    // Drags the selected files; returns when the drag has ended.
    void startDrag();
    // Accepts or refuses a drag over the view (enter and move alike).
    void dragOver(QDropEvent* event) const;
    void drop(QDropEvent* event);
    void post(DropRequest request);
    // The posted drop arrived.
    void deferred(PostedMessage& message);

private:
    std::uint32_t effect(const QDropEvent* event) const;

    QWidget& m_view;
    BrowserList& m_list;
    GridSelection& m_selection;
    FileOperations& m_fileOps;
};

} // namespace lanmira
