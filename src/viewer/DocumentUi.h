#pragma once

#include "imagelib/imagelib.h"

#include <QString>

#include <optional>

namespace lanmira {

class PackedDib;

// The questions and messages of the image document. The viewer answers them with message
// boxes and dialogs; tests answer them from a script.
class DocumentUi {
public:
    enum class Answer { Yes, No, Cancel };

    // What the Save As dialog returns: the path and a zeroed parameter block carrying the
    // chosen format and its option fields.
    struct SaveAsChoice {
        QString path;
        ImageIoParams params{};
    };

    virtual ~DocumentUi() = default;

    // The "Prompt" setting.
    virtual bool promptEnabled() const = 0;
    // The image library's text after a failed open (exclamation icon).
    virtual void openFailed(const QString& errorText) = 0;
    // The image library's text after a failed page change (information icon).
    virtual void pageFailed(const QString& errorText) = 0;
    // "ids_lanmira_multipage" with OK and Cancel; true for OK.
    virtual bool confirmMultipage() = 0;
    // A finished "ids_calvora_savefilefail1/2" text (exclamation icon).
    virtual void saveFailed(const QString& message) = 0;
    // Whether to save the changes to `name` (the file path, or "ids_lanmira_savefile").
    virtual Answer askToSave(const QString& name) = 0;
    // The Save As dialog; nullopt when cancelled.
    virtual std::optional<SaveAsChoice> chooseSaveAs(const PackedDib& picture,
                                                     const QString& proposedName) = 0;
};

} // namespace lanmira
