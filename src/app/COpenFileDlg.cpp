#include "app/COpenFileDlg.h"

#include "acquire/DibLayout.h"
#include "acquire/PackedDib.h"
#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "viewer/FormatFilters.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QVBoxLayout>

namespace lanmira {
namespace {

constexpr int kPreviewBox = 256;

// A picture that fits the preview box, or null for anything that is not a picture.
QImage thumbnail(const QString& path, QSize* fullSize) {
    ImageIoParams params{};
    ImageLibFullInfo full{};
    const PackedDib dib = dibFromImageLib(
        ImageLib_OpenScaled(path.toUtf8().constData(), &params, kPreviewBox, kPreviewBox, &full));
    const PackedDib rgb = dibToRgb24(dib);
    const auto layout = DibLayout::read(rgb.data(), rgb.size());
    if (!layout)
        return {};
    *fullSize = QSize(full.width, full.height);
    const QImage bottomUp(rgb.data() + layout->pixelOffset, layout->width, layout->height,
                          static_cast<qsizetype>(layout->stride), QImage::Format_BGR888);
    const QImage picture = bottomUp.mirrored(false, true);
    // Small pictures keep their size: enlarged, they would look like something they are not.
    if (picture.width() <= kPreviewBox && picture.height() <= kPreviewBox)
        return picture;
    return picture.scaled(kPreviewBox, kPreviewBox, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

class PreviewPane final : public QGroupBox {
public:
    explicit PreviewPane(QWidget* parent)
        : QGroupBox(i18n_stringW("ids_lanmira_open_preview"), parent), m_picture(new QLabel(this)),
          m_size(new QLabel(this)) {
        setObjectName(QStringLiteral("preview"));
        m_picture->setObjectName(QStringLiteral("previewPicture"));
        m_size->setObjectName(QStringLiteral("previewSize"));
        m_picture->setFixedSize(kPreviewBox, kPreviewBox);
        m_picture->setAlignment(Qt::AlignCenter);
        m_size->setAlignment(Qt::AlignCenter);
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(m_picture);
        layout->addWidget(m_size);
        layout->addStretch(1);
    }

    void showFile(const QString& path) {
        QSize full;
        const QImage image = QFileInfo(path).isFile() ? thumbnail(path, &full) : QImage();
        if (image.isNull()) {
            m_picture->clear();
            m_size->clear();
            return;
        }
        m_picture->setPixmap(QPixmap::fromImage(image));
        m_size->setText(QStringLiteral("%1 x %2").arg(full.width()).arg(full.height()));
    }

private:
    QLabel* m_picture;
    QLabel* m_size;
};

} // namespace

QString COpenFileDlg::run(QWidget* parent, bool preview) {
    QFileDialog dialog(parent, i18n_stringW("ids_lanmira_open_title"));
    dialog.setObjectName(QStringLiteral("COpenFileDlg"));
    // The desktop's own dialog could not carry the preview pane.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);

    const std::vector<FileType> types = openFileTypes();
    QStringList filters;
    for (const FileType& type : types)
        filters << type.nameFilter();
    dialog.setNameFilters(filters);
    // The list ends with all supported pictures, then all files; the first is the useful
    // start.
    if (filters.size() >= 2)
        dialog.selectNameFilter(filters.at(filters.size() - 2));

    if (preview) {
        if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) {
            auto* pane = new PreviewPane(&dialog);
            grid->addWidget(pane, 0, grid->columnCount(), grid->rowCount(), 1);
            QObject::connect(&dialog, &QFileDialog::currentChanged, pane, &PreviewPane::showFile);
        }
    }
    dialog.resize(dialog.sizeHint().expandedTo(QSize(880, 500)));

    if (dialog.exec() != QDialog::Accepted)
        return {};
    const QStringList chosen = dialog.selectedFiles();
    return chosen.isEmpty() ? QString() : chosen.first();
}

} // namespace lanmira
