#pragma once

#include "viewer/DocumentUi.h"

#include <optional>

class QWidget;

namespace lanmira {

class PackedDib;

// The Save As dialog: the formats that can store the picture, an "Option" button for the
// chosen format's save options, and the replace question.
class CSaveAsDlg {
public:
    static std::optional<DocumentUi::SaveAsChoice> run(QWidget* parent, const PackedDib& picture,
                                                       const QString& proposedName);
};

} // namespace lanmira
