#pragma once

class QElapsedTimer;

namespace lanmira {

class BrowserList;
class ThumbnailCache;

// The periodic look at the current folder: drops items whose files are gone, notes changed
// ones and, time permitting, adds new files. Runs with the list's lock held.
class ChangeCheck {
public:
    struct Outcome {
        bool removed = false;
        bool changed = false;
        bool added = false;
    };

    // `clock` runs since the check began; a slow check skips looking for new files.
    static Outcome run(BrowserList& list, ThumbnailCache& cache, const QElapsedTimer& clock);
};

} // namespace lanmira
