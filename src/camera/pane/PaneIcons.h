#pragma once

#include <QIcon>

namespace lanmira {

// The small pictures of the pane's group captions, by group number.
QIcon paneGroupIcon(int group);

enum class PreviewImage { Snap, Record, RecordStop };
// The snap and record buttons' pictures; each has a normal and a disabled look.
QIcon previewButtonIcon(PreviewImage image);

} // namespace lanmira
