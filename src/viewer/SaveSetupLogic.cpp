#include "viewer/SaveSetupLogic.h"

#include "browser/FormatLookup.h"

namespace lanmira {

SaveSetupLogic::SaveSetupLogic(QStringList extensions, const QString& currentExtension)
    : m_extensions(std::move(extensions)) {
    m_index = indexOf(m_extensions, currentExtension);
    select(m_index < 0 ? QString() : m_extensions[m_index]);
}

int SaveSetupLogic::indexOf(const QStringList& extensions, const QString& extension) {
    if (extensions.isEmpty())
        return -1;
    for (int i = 0; i < extensions.size(); ++i)
        if (extensions[i].compare(extension, Qt::CaseInsensitive) == 0)
            return i;
    return 0;
}

int SaveSetupLogic::formatOf(const QString& extension) {
    if (extension.isEmpty())
        return 0;
    return static_cast<int>(FormatLookup::formatOfExtension(extension));
}

bool SaveSetupLogic::hasOptionDialog() const {
    return iopt_bDlg(m_format) != 0;
}

void SaveSetupLogic::select(const QString& text) {
    m_extension = text.left(kMaxExtension);
    const int at = m_extensions.indexOf(text);
    if (at >= 0)
        m_index = at;
    m_format = formatOf(m_extension);
    m_options = iopt_get_default(m_format);
}

SaveSetupChoice SaveSetupLogic::choice(const QString& title) const {
    return {title, m_extension, m_format, m_options};
}

} // namespace lanmira
