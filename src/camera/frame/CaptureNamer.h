#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace lanmira {

// Names of captured frames: title, a counter of at least four digits and the extension
// ("Lanmira0007.jpg"). An existing file is never overwritten.
class CaptureNamer {
public:
    using Exists = std::function<bool(const QString& path)>;

    static QString name(const QString& title, int counter, const QString& extension);

    // The name to save the next capture under. With `advance`, a taken name moves the
    // counter on until a free one is found; without it, a taken name means no save
    // (nothing returned, counter unchanged). The counter is not moved past the returned
    // name: the caller adds 1 after a successful save.
    static std::optional<QString> next(const QString& title, int& counter, const QString& extension,
                                       bool advance, const Exists& exists);
};

} // namespace lanmira
