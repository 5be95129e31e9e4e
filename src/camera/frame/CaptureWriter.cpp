#include "camera/frame/CaptureWriter.h"

#include "camera/frame/CaptureNamer.h"
#include "imagelib/imagelib.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QMetaObject>
#include <QPointer>
#include <QThreadPool>

#include <memory>

namespace lanmira {

CaptureWriter::CaptureWriter(QObject* parent) : QObject(parent) {}

void CaptureWriter::save(PackedDib picture, const QString& path, const CaptureFormat& format) {
    m_pending.insert(path);
    ImageIoParams params{};
    params.format = static_cast<std::uint32_t>(format.format);
    params.formatOption = format.options[0];
    for (int i = 0; i < 4; ++i)
        params.optionFlags[i] = static_cast<std::uint8_t>(format.options[1] >> (8 * i));

    auto job = std::make_shared<PackedDib>(std::move(picture));
    QPointer<CaptureWriter> self(this);
    QThreadPool::globalInstance()->start([job, path, params, self]() mutable {
        const bool ok =
            ImageLib_Save(QFile::encodeName(path).constData(), job->data(), &params) != 0;
        QString error;
        if (!ok) {
            std::size_t n = 0;
            while (n < std::size(params.errorText) && params.errorText[n])
                ++n;
            error = QString::fromUtf16(params.errorText, static_cast<qsizetype>(n));
        }
        job.reset();
        // The window may have gone meanwhile; then nobody is told, but the file is whole.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, path, ok, error] {
                if (self)
                    self->finish(path, ok, error);
            },
            Qt::QueuedConnection);
    });
}

QString CaptureWriter::saveNext(PackedDib picture, const CaptureFormat& format, int& counter,
                                bool advance) {
    if (!picture)
        return {};
    const auto taken = [this](const QString& path) {
        return isPending(path) || QFileInfo::exists(path);
    };
    const auto name = CaptureNamer::next(format.title, counter, format.extension, advance, taken);
    if (!name)
        return {};
    save(std::move(picture), *name, format);
    ++counter;
    return *name;
}

void CaptureWriter::finish(const QString& path, bool ok, const QString& error) {
    m_pending.remove(path);
    if (ok)
        Q_EMIT saved(path);
    else
        Q_EMIT failed(path, error);
}

} // namespace lanmira
