#pragma once

#include <QString>

#include <cstdint>

class QWidget;

namespace lanmira {

// What the viewer asks of the application around it.
class ViewerHost {
public:
    virtual ~ViewerHost() = default;

    // The "Prompt" setting: ask before a changed picture is replaced or closed.
    virtual bool promptToSave() const = 0;
    // The slide show's delay in milliseconds.
    virtual std::uint32_t slideDelay() const = 0;
    // The application's Open dialog; empty when cancelled.
    virtual QString chooseFileToOpen(QWidget* parent) = 0;
    // The browser's delete of one file: the removed item's former position in the folder
    // list, negative when nothing was deleted.
    virtual int deleteFile(const QString& path, bool forGood) = 0;
    // The "OT" setting (hand tool on or off).
    virtual int readTrackMode() = 0;
    virtual void writeTrackMode(int trackMode) = 0;
};

} // namespace lanmira
