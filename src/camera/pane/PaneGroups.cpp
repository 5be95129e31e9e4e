#include "camera/pane/PaneGroups.h"

namespace lanmira {

CollapsedGroups CollapsedGroups::read(const Reader& read) {
    CollapsedGroups g;
    for (int i = 1; i < kGroupCount; ++i)
        g.collapsed[static_cast<std::size_t>(i)] = read(QString::number(i), 1) != 0;
    return g;
}

void CollapsedGroups::write(const Writer& write) const {
    for (int i = 1; i < kGroupCount; ++i)
        write(QString::number(i), collapsed[static_cast<std::size_t>(i)] ? 1 : 0);
}

std::vector<RegionReporter::Post> RegionReporter::attached(bool whiteBalanceOpen, bool exposureOpen,
                                                           bool colour) {
    m_whiteBalanceCollapsed = !whiteBalanceOpen;
    m_exposureCollapsed = !exposureOpen;
    return {{whiteBalanceOpen && colour, 1}, {exposureOpen, 0}};
}

std::vector<RegionReporter::Post> RegionReporter::groupsChanged(bool whiteBalanceOpen,
                                                                bool exposureOpen, bool colour) {
    std::vector<Post> posts;
    if (m_whiteBalanceCollapsed == whiteBalanceOpen) {
        m_whiteBalanceCollapsed = !whiteBalanceOpen;
        posts.push_back({whiteBalanceOpen && colour, 1});
    }
    if (m_exposureCollapsed == exposureOpen) {
        m_exposureCollapsed = !exposureOpen;
        posts.push_back({exposureOpen, 0});
    }
    return posts;
}

} // namespace lanmira
