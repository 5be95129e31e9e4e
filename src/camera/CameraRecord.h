#pragma once

#include <QString>

#include <cstdint>

namespace lanmira {

// One enumerated camera, the application's own copy of the capture library's record.
struct CameraRecord {
    QString id;
    QString name;
    std::uint32_t value = 0;
};

} // namespace lanmira
