#pragma once

#include <QPoint>
#include <QRect>

#include <functional>

namespace lanmira {

class BrowserList;
struct BrowserItem;

// What the left mouse button does to the grid's selection: a press on a picture selects it
// and may become a drag, a press between pictures starts a rubber band. Points are in
// document coordinates unless named otherwise. Runs on the GUI thread only.
class GridSelection {
public:
    enum class State {
        Idle,
        Banding,       // the left button went down between pictures
        PressedOnItem, // the left button went down on a picture: a drag once it moves far
        Dragging,      // a drag that started here is in progress
    };
    // Told of every cell whose selection changed, by index.
    using CellChanged = std::function<void(int index)>;

    explicit GridSelection(BrowserList& list) : m_list(list) {}

    State state() const { return m_state; }
    bool banding() const { return m_state == State::Banding; }
    bool dragging() const { return m_state == State::Dragging; }

    // The left button went down. True when the selection changed.
    bool press(QPoint documentPoint, QPoint viewportPoint, bool control,
               const CellChanged& changed);
    // The right button went down: an unselected picture under it becomes the selection, so
    // the context menu acts on what was clicked. True when the selection changed.
    bool pressForMenu(QPoint documentPoint, const CellChanged& changed);
    // The mouse moved with the left button down after a press on a picture: true once it
    // has left the square around the press, which ends the press.
    bool leavesDragSquare(QPoint viewportPoint);
    // Moves the band's free corner; pictures it touches become selected and, unless
    // `adding`, those it leaves are deselected. True when the selection changed.
    bool moveBand(QPoint documentPoint, bool adding, const CellChanged& changed);
    // The left button went up. True when a band was showing and must be erased.
    bool release();
    void beginDrag();
    void endDrag();

    // Exclusive of the far edges, so a band of no width selects nothing.
    QRect bandRect() const;
    void clear(const CellChanged& changed);
    // The selected item when exactly one is selected, else null.
    const BrowserItem* onlySelected() const;

private:
    void setState(State state) { m_state = state; }

    BrowserList& m_list;
    State m_state = State::Idle;
    QPoint m_anchor; // document coordinates
    QPoint m_current;
    QPoint m_pressPos; // viewport coordinates
};

} // namespace lanmira
