#pragma once

#include "acquire/PackedDib.h"
#include "imagelib/imagelib.h"
#include "viewer/DocumentUi.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace lanmira {

// The viewer's picture and its file: open, pages, save, the save prompt, delete, and the
// status texts. No widgets: the view turns each result into a fit and a repaint.
class ImageDocument {
public:
    // What an operation did to the view.
    enum class Result {
        Unchanged, // nothing shown changed
        Shown,     // a new picture or page: fit it and repaint
        Emptied,   // no picture any more: erase and repaint
    };

    explicit ImageDocument(DocumentUi& ui);

    bool hasPicture() const { return !m_image.isNull(); }
    const PackedDib& image() const { return m_image; }
    int currentPage() const { return m_currentPage; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    const QString& filePath() const { return m_filePath; }
    const QString& linkTarget() const { return m_linkTarget; }
    const ImageIoParams& ioParams() const { return m_ioParams; }
    bool modified() const { return m_modified; }

    // Owned by the slide show; the commands that stop it set it to false first.
    bool slideShowRunning = false;

    // open(path, linkTarget): asks to save first; an empty linkTarget of a symbolic link is
    // resolved here (an unresolvable link opens as the file itself). Always page 0.
    Result open(const QString& path, const QString& linkTarget = {});
    // The Open command's path: stops the slide show, then open(path).
    Result openFromDialog(const QString& path);
    // Takes over a pasted or acquired picture as untitled and modified, after the save
    // prompt; a refused prompt frees it.
    Result adopt(PackedDib picture);
    // A transform's result: replaces the picture and sets the modified flag.
    Result replacePicture(PackedDib picture);

    Result firstPage();
    Result previousPage();
    Result nextPage();
    Result lastPage();
    // The combined commands and the slide show: a page to step to in this file.
    bool hasNextPage() const;
    bool hasPreviousPage() const;

    // Save (57603): Save As for an untitled picture. True when saved.
    bool save();
    // Save As (57604): never changes the path, the link target or the modified flag.
    bool saveAs();
    bool saveDocument(const QString& path, const PackedDib& picture, ImageIoParams params);
    // The question before the picture is replaced or the view closes; true: go on.
    bool promptToSave();
    bool saveBeforeClose();

    // Delete (32772): `deleteFile` is the browser's delete of one file and returns the
    // file's former position or a negative number. The position to show next after the
    // picture was cleared, or -1 when nothing is to change.
    int deleteShown(const std::function<int(const QString&)>& deleteFile);

    void clear();
    // close(): promptToSave, then clear and stop the slide show; false when refused. The
    // caller withdraws the viewer receiver.
    bool close();

    // Enabling rules of the document's commands.
    bool canSave() const;
    bool canSaveAs() const { return hasPicture(); }
    bool canDelete() const { return hasPicture(); }
    bool canFirstPage() const;
    bool canPreviousPage() const;
    bool canNextPage() const;
    bool canLastPage() const;

    // Status bar panes 59397..59400; empty without a picture.
    QString pathText() const;
    QString sizeText() const;
    QString depthText() const;
    QString pageText() const;

private:
    // A picture from a known format with several pages.
    bool canChangePage() const;
    Result loadPage();
    bool decode(const QString& path, ImageIoParams& params);

    DocumentUi& m_ui;
    PackedDib m_image;
    int m_currentPage = 0;
    int m_width = 0;
    int m_height = 0;
    QString m_filePath;
    QString m_linkTarget;
    ImageIoParams m_ioParams{};
    bool m_modified = false;
};

} // namespace lanmira
