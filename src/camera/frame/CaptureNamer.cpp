#include "camera/frame/CaptureNamer.h"

#include <limits>

namespace lanmira {

QString CaptureNamer::name(const QString& title, int counter, const QString& extension) {
    // Only the number goes through the format, so a '%' in the title is taken literally.
    return title + QString::asprintf("%04d", counter) + QLatin1Char('.') + extension;
}

std::optional<QString> CaptureNamer::next(const QString& title, int& counter,
                                          const QString& extension, bool advance,
                                          const Exists& exists) {
    int candidate = counter;
    for (;;) {
        QString path = name(title, candidate, extension);
        if (!exists || !exists(path)) {
            counter = candidate;
            return path;
        }
        if (!advance || candidate == std::numeric_limits<int>::max())
            return std::nullopt;
        ++candidate;
    }
}

} // namespace lanmira
