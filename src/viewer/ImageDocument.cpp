#include "viewer/ImageDocument.h"

#include "acquire/DibLayout.h"
#include "browser/FileNames.h"
#include "i18n/i18n.h"
#include "platform/TextFormat.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>
#include <iterator>

using namespace Qt::StringLiterals;

namespace lanmira {

namespace {

QString errorTextOf(const ImageIoParams& params) {
    const auto* end = std::find(std::begin(params.errorText), std::end(params.errorText), u'\0');
    return QString::fromUtf16(params.errorText, end - std::begin(params.errorText));
}

void emptyErrorText(ImageIoParams& params) {
    std::fill(std::begin(params.errorText), std::end(params.errorText), u'\0');
}

std::optional<DibLayout> layoutOf(const PackedDib& picture) {
    return picture ? DibLayout::read(picture.data(), picture.size()) : std::nullopt;
}

// The horizontal resolution field; the old core header has none.
std::int32_t pelsPerMeterX(const PackedDib& picture) {
    const auto layout = layoutOf(picture);
    if (!layout || layout->coreHeader)
        return 0;
    std::int32_t value = 0;
    std::memcpy(&value, picture.data() + 24, sizeof value);
    return value;
}

// What a symbolic link points to, or empty when it is none or its target is gone, in
// which case the file is opened as itself.
QString resolveLink(const QString& path) {
    const QFileInfo info(path);
    if (!info.isSymLink())
        return {};
    const QString target = info.symLinkTarget();
    if (target.isEmpty() || !QFileInfo::exists(target))
        return {};
    return QFileInfo(target).absoluteFilePath();
}

} // namespace

ImageDocument::ImageDocument(DocumentUi& ui) : m_ui(ui) {}

bool ImageDocument::decode(const QString& path, ImageIoParams& params) {
    // The library's block is kept as it is: copying a large picture would cost as much as
    // a good part of decoding it.
    m_image = dibFromImageLib(ImageLib_Open(filenames::encode(path).constData(), &params));
    const auto layout = layoutOf(m_image);
    if (!layout) {
        m_image.reset();
        return false;
    }
    m_width = layout->width;
    m_height = layout->height;
    return true;
}

ImageDocument::Result ImageDocument::open(const QString& path, const QString& linkTarget) {
    if (path.isEmpty() || !promptToSave())
        return Result::Unchanged;
    clear();
    m_filePath = path;
    m_linkTarget = linkTarget.isEmpty() ? resolveLink(path) : linkTarget;
    m_ioParams = ImageIoParams{};
    m_ioParams.pageIndex = m_currentPage;
    if (!decode(m_linkTarget.isEmpty() ? m_filePath : m_linkTarget, m_ioParams)) {
        const QString text = errorTextOf(m_ioParams);
        if (!text.isEmpty())
            m_ui.openFailed(text);
        return Result::Emptied;
    }
    m_modified = false;
    return Result::Shown;
}

ImageDocument::Result ImageDocument::openFromDialog(const QString& path) {
    slideShowRunning = false;
    if (path.isEmpty())
        return Result::Unchanged;
    m_currentPage = 0;
    return open(path);
}

ImageDocument::Result ImageDocument::adopt(PackedDib picture) {
    const auto layout = layoutOf(picture);
    if (!layout)
        return Result::Unchanged;
    if (!promptToSave())
        return Result::Unchanged;
    clear();
    m_image = std::move(picture);
    m_width = layout->width;
    m_height = layout->height;
    m_modified = true;
    return Result::Shown;
}

ImageDocument::Result ImageDocument::replacePicture(PackedDib picture) {
    const auto layout = layoutOf(picture);
    if (!layout)
        return Result::Unchanged;
    m_image = std::move(picture);
    m_width = layout->width;
    m_height = layout->height;
    m_modified = true;
    slideShowRunning = false;
    return Result::Shown;
}

// Pages

ImageDocument::Result ImageDocument::loadPage() {
    // Freed first, so that the decoder can reuse the block.
    m_image.reset();
    if (m_filePath.isEmpty() || m_ioParams.pageCount < 2)
        return Result::Emptied;
    // The rest of the block, the page count included, stays as the last open left it.
    m_ioParams.pageIndex = m_currentPage;
    emptyErrorText(m_ioParams);
    if (decode(m_linkTarget.isEmpty() ? m_filePath : m_linkTarget, m_ioParams))
        return Result::Shown;
    if (const QString text = errorTextOf(m_ioParams); !text.isEmpty())
        m_ui.pageFailed(text);
    return Result::Emptied;
}

bool ImageDocument::canChangePage() const {
    return hasPicture() && m_ioParams.format != 0 && m_ioParams.pageCount >= 2;
}

ImageDocument::Result ImageDocument::firstPage() {
    slideShowRunning = false;
    if (!canChangePage())
        return Result::Unchanged;
    m_currentPage = 0;
    return loadPage();
}

ImageDocument::Result ImageDocument::previousPage() {
    slideShowRunning = false;
    // Tested against the page last decoded, not the current page.
    if (!canChangePage() || m_ioParams.pageIndex < 1)
        return Result::Unchanged;
    m_currentPage = std::max(0, m_currentPage - 1);
    return loadPage();
}

ImageDocument::Result ImageDocument::nextPage() {
    slideShowRunning = false;
    if (!canChangePage() || m_currentPage >= m_ioParams.pageCount - 1)
        return Result::Unchanged;
    m_currentPage = (m_currentPage + 1) % m_ioParams.pageCount;
    return loadPage();
}

ImageDocument::Result ImageDocument::lastPage() {
    slideShowRunning = false;
    if (!canChangePage())
        return Result::Unchanged;
    m_currentPage = m_ioParams.pageCount - 1;
    return loadPage();
}

bool ImageDocument::hasNextPage() const {
    return canChangePage() && m_currentPage < m_ioParams.pageCount - 1;
}

bool ImageDocument::hasPreviousPage() const {
    return canChangePage() && m_ioParams.pageIndex >= 1;
}

// Saving

bool ImageDocument::save() {
    slideShowRunning = false;
    if (!canSave())
        return false;
    if (m_filePath.isEmpty())
        return saveAs();
    // The file keeps the format and options it was opened with.
    ImageIoParams params = m_ioParams;
    emptyErrorText(params);
    if (!saveDocument(m_filePath, m_image, params))
        return false;
    m_modified = false;
    return true;
}

bool ImageDocument::saveAs() {
    slideShowRunning = false;
    if (!hasPicture())
        return false;
    const auto choice = m_ui.chooseSaveAs(m_image, QFileInfo(m_filePath).fileName());
    if (!choice)
        return false;
    // Only the format and its option fields come from the dialog.
    ImageIoParams params{};
    params.format = choice->params.format;
    params.formatOption = choice->params.formatOption;
    std::memcpy(params.optionBytes, choice->params.optionBytes, sizeof params.optionBytes);
    std::memcpy(params.optionFlags, choice->params.optionFlags, sizeof params.optionFlags);
    // The document keeps its path and modified flag: the view still refers to the old file.
    return saveDocument(choice->path, m_image, params);
}

bool ImageDocument::saveDocument(const QString& path, const PackedDib& picture,
                                 ImageIoParams params) {
    if (params.pageCount > 1 && !m_ui.confirmMultipage())
        return false;
    if (ImageLib_Save(filenames::encode(path).constData(), picture.data(), &params))
        return true;
    const QString text = errorTextOf(params);
    m_ui.saveFailed(text.isEmpty()
                        ? formatText(i18n_stringW("ids_calvora_savefilefail2"), {path})
                        : formatText(i18n_stringW("ids_calvora_savefilefail1"), {path, text}));
    return false;
}

bool ImageDocument::promptToSave() {
    if (!m_ui.promptEnabled() || !hasPicture() || !m_modified)
        return true;
    const QString name = m_filePath.isEmpty() ? i18n_stringW("ids_lanmira_savefile") : m_filePath;
    switch (m_ui.askToSave(name)) {
    case DocumentUi::Answer::Yes:
        return saveBeforeClose();
    case DocumentUi::Answer::No:
        return true;
    case DocumentUi::Answer::Cancel:
        break;
    }
    return false;
}

bool ImageDocument::saveBeforeClose() {
    if (!hasPicture() || m_ioParams.pageCount >= 2 || !m_modified)
        return true;
    if (m_filePath.isEmpty())
        return saveAs();
    // An all-zero block, unlike Save: the file name's extension picks the format.
    if (!saveDocument(m_filePath, m_image, ImageIoParams{}))
        return false;
    m_modified = false;
    return true;
}

int ImageDocument::deleteShown(const std::function<int(const QString&)>& deleteFile) {
    slideShowRunning = false;
    if (m_filePath.isEmpty())
        return -1;
    const int position = deleteFile(m_filePath);
    // The question comes after the file is already gone; that order is kept on purpose.
    if (position < 0 || !promptToSave())
        return -1;
    clear();
    return position;
}

void ImageDocument::clear() {
    m_image.reset();
    m_currentPage = 0;
    m_width = 0;
    m_height = 0;
    m_filePath.clear();
    m_linkTarget.clear();
    m_ioParams = ImageIoParams{};
    m_modified = false;
}

bool ImageDocument::close() {
    if (!promptToSave())
        return false;
    clear();
    slideShowRunning = false;
    return true;
}

// Enabling

bool ImageDocument::canSave() const {
    return hasPicture() && m_ioParams.pageCount < 2 && m_modified;
}

bool ImageDocument::canFirstPage() const {
    return hasPicture() && m_ioParams.pageCount >= 1 && m_currentPage != 0;
}

bool ImageDocument::canPreviousPage() const {
    return hasPicture() && m_ioParams.pageCount >= 2 && m_currentPage >= 1;
}

bool ImageDocument::canNextPage() const {
    return hasPicture() && m_ioParams.pageCount >= 2 && m_currentPage < m_ioParams.pageCount - 1;
}

bool ImageDocument::canLastPage() const {
    return hasPicture() && m_ioParams.pageCount >= 1 && m_currentPage != m_ioParams.pageCount - 1;
}

// Status texts

QString ImageDocument::pathText() const {
    // Also without a picture: after a failed open the pane still names the file.
    if (m_filePath.isEmpty())
        return {};
    if (m_linkTarget.isEmpty())
        return m_filePath;
    return m_filePath + u" --> "_s + m_linkTarget;
}

QString ImageDocument::sizeText() const {
    if (!hasPicture())
        return {};
    return formatText(u"%d x %d"_s, {m_width, m_height});
}

QString ImageDocument::depthText() const {
    const auto layout = layoutOf(m_image);
    if (!layout)
        return {};
    return formatText(i18n_stringW("ids_lanmira_bpp"), {layout->bitCount, pelsPerMeterX(m_image)});
}

QString ImageDocument::pageText() const {
    if (!hasPicture())
        return {};
    const int count = m_ioParams.pageCount == 0 ? 1 : m_ioParams.pageCount;
    return formatText(i18n_stringW("ids_lanmira_page"), {m_currentPage + 1, count});
}

} // namespace lanmira
