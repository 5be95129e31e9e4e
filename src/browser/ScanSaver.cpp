#include "browser/ScanSaver.h"

#include "camera/frame/CaptureNamer.h"
#include "camera/frame/CaptureWriter.h"

#include <QFileInfo>

namespace lanmira {

ScanSaver::ScanSaver(QObject* parent) : QObject(parent), m_writer(new CaptureWriter(this)) {}

QString ScanSaver::save(PackedDib page, const CaptureFormat& format, int& counter) {
    if (!page)
        return {};
    const auto exists = [this](const QString& path) {
        return m_writer->isPending(path) || QFileInfo::exists(path);
    };
    const auto name = CaptureNamer::next(format.title, counter, format.extension, true, exists);
    if (!name)
        return {};
    m_writer->save(std::move(page), *name, format);
    ++counter;
    return *name;
}

} // namespace lanmira
