#pragma once

#include <QString>

namespace lanmira {

class BrowserList;

// The three status texts of the browser's selection.
struct StatusTexts {
    QString position; // "%d/%d" for one selected item, else "%d, %d"
    QString image;    // "Waiting...", "%d bpp  %d x %d" or empty
    QString name;     // one selected item: its file name (and " --> " target); else empty

    static StatusTexts of(const BrowserList& list);
};

} // namespace lanmira
