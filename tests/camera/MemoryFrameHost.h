#pragma once

#include "camera/frame/VideoFrameHost.h"
#include "platform/CommandRouter.h"

#include <QMap>
#include <QString>

namespace lanmira {

// What a camera window asks of the application, kept in memory: its settings, the capture
// format and counter, and what it was told.
class MemoryFrameHost final : public VideoFrameHost, public CommandTarget {
public:
    int readSetting(const QString& section, const QString& key, int def) override {
        return settings.value(section + u'/' + key, def);
    }
    void writeSetting(const QString& section, const QString& key, int value) override {
        settings[section + u'/' + key] = value;
    }
    CaptureFormat captureSettings() const override { return format; }
    int& captureCounter() override { return counter; }
    void setCurrentCamera(const QString& id) override { current = id; }
    void cameraFrameDestroyed(CVideoFrame*) override { ++destroyed; }
    CommandTarget* applicationCommands() override { return this; }
    bool onCommand(int) override { return false; }
    bool onUpdateCommand(int, CommandState&) override { return false; }

    QMap<QString, int> settings;
    CaptureFormat format;
    int counter = 0;
    QString current;
    int destroyed = 0;
};

} // namespace lanmira
