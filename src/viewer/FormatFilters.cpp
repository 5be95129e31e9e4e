#include "viewer/FormatFilters.h"

#include "i18n/i18n.h"
#include "imagelib/imagelib.h"

using namespace Qt::StringLiterals;

namespace lanmira {

namespace {

// In the order of the library's extension table.
QStringList patternsOf(std::uint32_t format) {
    QStringList patterns;
    for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row->ext; ++row)
        if (row->format == format)
            patterns.append(u"*."_s + QString::fromUtf8(row->ext));
    return patterns;
}

FileType entryFor(std::uint32_t format, const ImageLibFmtInfo& info) {
    FileType type;
    type.format = format;
    type.patterns = patternsOf(format);
    type.text = QString::fromUtf8(info.name) + u" ("_s + type.patterns.join(u';') + u')';
    return type;
}

} // namespace

QString FileType::nameFilter() const {
    // The entries carry their patterns in the text already, joined the other way.
    QString label = text;
    const QString suffix = u" ("_s + patterns.join(u';') + u')';
    if (label.endsWith(suffix))
        label.chop(suffix.size());
    return label + u" ("_s + patterns.join(u' ') + u')';
}

std::vector<FileType> saveFileTypes(const PackedDib& picture) {
    std::vector<FileType> types;
    for (std::uint32_t format = 0; format < IMAGELIB_FMT_COUNT; ++format) {
        ImageIoParams params{};
        params.format = format;
        if (!ImageLib_CanSave(picture.data(), &params))
            continue;
        if (const ImageLibFmtInfo* info = ImageLib_GetFmtInfo(static_cast<int>(format)))
            types.push_back(entryFor(format, *info));
    }
    return types;
}

std::vector<FileType> openFileTypes() {
    std::vector<FileType> types;
    QStringList all;
    for (std::uint32_t format = 0; format < IMAGELIB_FMT_COUNT; ++format) {
        if (const ImageLibFmtInfo* info = ImageLib_GetFmtInfo(static_cast<int>(format))) {
            types.push_back(entryFor(format, *info));
            all += types.back().patterns;
        }
    }
    types.push_back({0, i18n_stringW("ids_calvora_allsupported"), all});
    types.push_back({0, i18n_stringW("ids_lanmira_allfiles"), {u"*"_s}});
    return types;
}

} // namespace lanmira
