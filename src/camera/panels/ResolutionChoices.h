#pragma once

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace lanmira {

// The entries of the resolution list, "width * height" each, and the one to select.
struct ResolutionChoices {
    QStringList texts;
    int selected = -1;

    static QString text(int width, int height);
    // The camera's own list, in its order, selecting the index it reports.
    static ResolutionChoices fromInterface(const std::vector<std::pair<int, int>>& sizes,
                                           int currentIndex);
    // The capture library's capability table, which can list a size once per pixel format:
    // each size is listed once, and the size now in use is selected when there is one.
    static ResolutionChoices fromCapability(const std::vector<std::pair<int, int>>& sizes,
                                            const std::pair<int, int>* current);
};

} // namespace lanmira
