#include "viewer/CSaveAsDlg.h"

#include "acquire/PackedDib.h"
#include "i18n/i18n.h"
#include "imagelib/iopt.h"
#include "platform/CImageOptionsDlg.h"
#include "platform/TextFormat.h"
#include "viewer/FormatFilters.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <map>

namespace lanmira {

namespace {

bool confirmReplace(QWidget* parent, const QString& path) {
    QMessageBox box(QMessageBox::Warning, i18n_stringW("ids_lanmira_appname"),
                    formatText(i18n_stringW("ids_calvora_savedlg_replace"), {path}),
                    QMessageBox::Yes | QMessageBox::No, parent);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

DocumentUi::SaveAsChoice choiceFor(const QString& path, std::uint32_t format, IoptOptions options) {
    DocumentUi::SaveAsChoice choice;
    choice.path = path;
    choice.params.format = format;
    choice.params.formatOption = options.value1;
    for (int k = 0; k < 4; ++k)
        choice.params.optionFlags[k] = static_cast<std::uint8_t>(options.value2 >> (8 * k));
    return choice;
}

} // namespace

std::optional<DocumentUi::SaveAsChoice> CSaveAsDlg::run(QWidget* parent, const PackedDib& picture,
                                                        const QString& proposedName) {
    const std::vector<FileType> types = saveFileTypes(picture);
    if (types.empty())
        return std::nullopt;
    QStringList filters;
    for (const FileType& type : types)
        filters.append(type.nameFilter());

    // Our own dialog rather than the desktop's: it carries the "Option" button.
    QFileDialog dialog(parent, i18n_stringW("ids_lanmira_saveas_title"), QDir::currentPath());
    dialog.setObjectName(QStringLiteral("CSaveAsDlg"));
    dialog.setOptions(QFileDialog::DontConfirmOverwrite | QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters(filters);
    dialog.selectNameFilter(filters.first());
    if (!proposedName.isEmpty())
        dialog.selectFile(proposedName);

    const auto selectedType = [&]() -> const FileType& {
        return types[static_cast<std::size_t>(
            std::max<qsizetype>(0, filters.indexOf(dialog.selectedNameFilter())))];
    };

    auto* option = new QPushButton(i18n_stringW("ids_lanmira_saveas_option"), &dialog);
    option->setObjectName(QStringLiteral("saveAsOption"));
    option->setAutoDefault(false);
    if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout()))
        grid->addWidget(option, grid->rowCount(), grid->columnCount() - 1);
    else if (dialog.layout())
        dialog.layout()->addWidget(option);

    // What the user chose in a format's option dialog during this run, by format.
    std::map<std::uint32_t, IoptOptions> chosen;
    const auto updateOption = [&] {
        option->setEnabled(iopt_bDlg(static_cast<int>(selectedType().format)) != 0);
    };
    QObject::connect(&dialog, &QFileDialog::filterSelected, option, updateOption);
    // The signal above only follows the user's choice; the type list's own index also
    // follows a type chosen from code.
    if (auto* typeList = dialog.findChild<QComboBox*>(QStringLiteral("fileTypeCombo")))
        QObject::connect(typeList, &QComboBox::currentIndexChanged, option, updateOption);
    QObject::connect(option, &QPushButton::clicked, &dialog, [&] {
        const std::uint32_t format = selectedType().format;
        chosen[format] = iopt_Dlg(static_cast<int>(format), &dialog, 0);
    });
    updateOption();

    while (dialog.exec() == QDialog::Accepted) {
        const QStringList files = dialog.selectedFiles();
        if (files.isEmpty())
            continue;
        QString path = files.constFirst();
        // A typed extension of another format that can store the picture wins over the type
        // list: "scan.png" is meant to be a PNG file.
        const FileType* typed = nullptr;
        const QString suffix = QFileInfo(path).suffix();
        for (const FileType& t : types)
            if (!suffix.isEmpty() &&
                t.patterns.contains(QStringLiteral("*.") + suffix, Qt::CaseInsensitive))
                typed = &t;
        const FileType& type = typed && !selectedType().patterns.contains(
                                            QStringLiteral("*.") + suffix, Qt::CaseInsensitive)
                                   ? *typed
                                   : selectedType();
        // "*.jpg" gives ".jpg".
        if (suffix.isEmpty() && !type.patterns.isEmpty())
            path += type.patterns.constFirst().mid(1);
        if (QFileInfo::exists(path) && !confirmReplace(&dialog, path))
            continue;
        const auto found = chosen.find(type.format);
        return choiceFor(path, type.format,
                         found != chosen.end() ? found->second
                                               : iopt_get_default(static_cast<int>(type.format)));
    }
    return std::nullopt;
}

} // namespace lanmira
