#pragma once

#include "browser/fileops/FileListData.h"

#include <QString>

#include <cstdint>

namespace lanmira {

// What a drop leaves for later: the folder it was made on, the files and the effect.
struct DropRequest {
    QString folder;
    FileListData files;
    std::uint32_t effect = effect::kNone;
};

} // namespace lanmira
