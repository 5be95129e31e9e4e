#include "viewer/ViewerCommands.h"

#include "platform/CommandIds.h"
#include "platform/CommandTarget.h"
#include "viewer/ImageDocument.h"
#include "viewer/ImageNavigator.h"
#include "viewer/ZoomGeometry.h"

namespace lanmira {

using Step = ImageNavigator::Step;

bool ViewerCommands::update(int id, CommandState& state, const ImageDocument& document,
                            const ImageNavigator& navigator, const ZoomGeometry& zoom,
                            int trackMode) {
    const bool picture = document.hasPicture();
    switch (id) {
    case cmd::ID_FILE_OPEN:
        state.enabled = true;
        break;
    case cmd::ID_FILE_SAVE:
        state.enabled = document.canSave();
        break;
    case cmd::ID_FILE_SAVE_AS:
        state.enabled = document.canSaveAs();
        break;
    case cmd::ID_DELETE:
        state.enabled = document.canDelete();
        break;
    case cmd::ID_PAGE_FIRST:
        state.enabled = document.canFirstPage();
        break;
    case cmd::ID_PAGE_PREVIOUS:
        state.enabled = document.canPreviousPage();
        break;
    case cmd::ID_PAGE_NEXT:
        state.enabled = document.canNextPage();
        break;
    case cmd::ID_PAGE_LAST:
        state.enabled = document.canLastPage();
        break;
    case cmd::ID_FILE_PRINT:
    case cmd::ID_FILE_PRINT_PREVIEW:
    case cmd::ID_COPY_IMAGE:
    case cmd::ID_ZOOM_BEST_FIT:
    case cmd::ID_ROTATE_CCW:
    case cmd::ID_ROTATE_CW:
    case cmd::ID_ROTATE_180:
    case cmd::ID_FLIP_HORIZONTAL:
    case cmd::ID_FLIP_VERTICAL:
        state.enabled = picture;
        break;
    case cmd::ID_TRACK:
        state.enabled = picture;
        state.setCheck(trackMode == 1);
        break;
    case cmd::ID_ZOOM_ACTUAL_SIZE:
        state.enabled = picture && !zoom.actualSize();
        break;
    case cmd::ID_ZOOM_LOCK:
        state.setCheck(zoom.locked());
        break;
    case cmd::ID_ZOOM_AUTO_SHRINK:
        state.enabled = picture;
        state.setCheck(zoom.fitMode() & ZoomGeometry::kAutoShrink);
        break;
    case cmd::ID_ZOOM_AUTO_ENLARGE:
        state.enabled = picture;
        state.setCheck(zoom.fitMode() & ZoomGeometry::kAutoEnlarge);
        break;
    case cmd::ID_IMAGE_FIRST:
        state.enabled = navigator.canStep(Step::First);
        break;
    case cmd::ID_IMAGE_PREVIOUS:
        state.enabled = navigator.canStep(Step::Previous);
        break;
    case cmd::ID_IMAGE_NEXT:
        state.enabled = navigator.canStep(Step::Next);
        break;
    case cmd::ID_IMAGE_LAST:
        state.enabled = navigator.canStep(Step::Last);
        break;
    case cmd::ID_NEXT_PAGE_OR_IMAGE:
        state.enabled = document.canNextPage() || navigator.canStep(Step::Next);
        break;
    case cmd::ID_PREVIOUS_PAGE_OR_IMAGE:
        state.enabled = document.canPreviousPage() || navigator.canStep(Step::Previous);
        break;
    case cmd::ID_SLIDE_SHOW:
        state.setCheck(document.slideShowRunning);
        break;
    default:
        return false;
    }
    return true;
}

} // namespace lanmira
