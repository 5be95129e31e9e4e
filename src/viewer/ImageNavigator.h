#pragma once

#include <QString>

namespace lanmira {

class BrowserList;

// Steps through the browser's folder list by moving its selection, and hands the file at
// the new position to the viewer receiver. The list lock is held only while the selection
// moves, never while the viewer opens the file.
class ImageNavigator {
public:
    enum class Step { First, Previous, Next, Last };

    explicit ImageNavigator(BrowserList& list);

    // Exactly one item is selected and it is not already at that end of the list.
    bool canStep(Step step) const;
    // From the first selected item; no wrap-around at either end.
    void step(Step step);
    // After the shown file was deleted: the item now at `position` (clamped).
    void showPosition(int position);
    // Selects the item whose path equals `filePath` ignoring case, and only that one.
    bool selectShownFile(const QString& filePath);
    // Hands the single selected item to the receiver; false when there is none or no
    // receiver.
    bool openSelected();

private:
    BrowserList& m_list;
};

} // namespace lanmira
