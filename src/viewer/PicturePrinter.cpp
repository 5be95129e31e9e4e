#include "viewer/PicturePrinter.h"

#include "i18n/i18n.h"
#include "viewer/ImageDocument.h"
#include "viewer/PictureDisplay.h"

#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>

using namespace Qt::StringLiterals;

namespace lanmira {

namespace {

// Without an installed printer the output goes to a PDF file beside the picture's name,
// which the print dialog offers as its print-to-file choice.
void prepare(QPrinter& printer, const QString& filePath, const QString& untitled) {
    const QFileInfo file(filePath);
    const QString name = file.completeBaseName().isEmpty() ? untitled : file.completeBaseName();
    printer.setDocName(name);
    if (printer.outputFormat() == QPrinter::PdfFormat && printer.outputFileName().isEmpty())
        printer.setOutputFileName(QDir::current().absoluteFilePath(name + u".pdf"_s));
}

} // namespace

void PicturePrinter::print() {
    if (!m_document.hasPicture())
        return;
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer, m_document.filePath(), i18n_stringW("ids_lanmira_savefile"));
    QPrintDialog dialog(&printer, m_parent);
    dialog.setOption(QAbstractPrintDialog::PrintToFile, true);
    if (dialog.exec() == QDialog::Accepted)
        render(&printer);
}

void PicturePrinter::preview() {
    if (!m_document.hasPicture())
        return;
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer, m_document.filePath(), i18n_stringW("ids_lanmira_savefile"));
    QPrintPreviewDialog preview(&printer, m_parent);
    QObject::connect(&preview, &QPrintPreviewDialog::paintRequested,
                     [this](QPrinter* p) { render(p); });
    preview.exec();
}

void PicturePrinter::render(QPrinter* printer) {
    const PackedDib& picture = m_document.image();
    if (!m_display.readable(picture))
        return;
    QPainter painter;
    if (!painter.begin(printer))
        return;
    QRect target;
    QImage image;
    if (!m_display.forPrinting(picture, painter.viewport(), target, image))
        return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(target, image);
}

} // namespace lanmira
