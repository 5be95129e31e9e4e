#pragma once

class QPrinter;
class QWidget;

namespace lanmira {

class ImageDocument;
class PictureDisplay;

// Prints the shown picture, fitted to the page and centred, through the print dialog or the
// print preview. Lives for one command.
class PicturePrinter {
public:
    PicturePrinter(QWidget* parent, const ImageDocument& document, PictureDisplay& display)
        : m_parent(parent), m_document(document), m_display(display) {}

    void print();
    void preview();

private:
    void render(QPrinter* printer);

    QWidget* m_parent;
    const ImageDocument& m_document;
    PictureDisplay& m_display;
};

} // namespace lanmira
