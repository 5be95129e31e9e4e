#include "camera/panels/ResolutionChoices.h"

namespace lanmira {

QString ResolutionChoices::text(int width, int height) {
    return QStringLiteral("%1 * %2").arg(width).arg(height);
}

ResolutionChoices ResolutionChoices::fromInterface(const std::vector<std::pair<int, int>>& sizes,
                                                   int currentIndex) {
    ResolutionChoices c;
    for (const auto& [w, h] : sizes)
        c.texts.push_back(text(w, h));
    c.selected = currentIndex >= 0 && currentIndex < c.texts.size() ? currentIndex : -1;
    return c;
}

ResolutionChoices ResolutionChoices::fromCapability(const std::vector<std::pair<int, int>>& sizes,
                                                    const std::pair<int, int>* current) {
    ResolutionChoices c;
    for (const auto& [w, h] : sizes) {
        const QString t = text(w, h);
        if (!c.texts.contains(t))
            c.texts.push_back(t);
    }
    if (current)
        c.selected = static_cast<int>(c.texts.indexOf(text(current->first, current->second)));
    return c;
}

} // namespace lanmira
