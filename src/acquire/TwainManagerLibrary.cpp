#include "acquire/TwainManagerLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <dlfcn.h>

namespace lanmira {

namespace {

struct Loaded {
    void* handle = nullptr;
    DSMENTRYPROC entry = nullptr;
    QStringList candidates;
};

Loaded& loadedLibrary() {
    static Loaded l;
    return l;
}

} // namespace

QStringList TwainManagerLibrary::defaultCandidates() {
    // A bare name lets the dynamic loader search the system's library path.
    return {
        QStringLiteral("libtwaindsm.so"),
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("libtwaindsm.so"))};
}

void TwainManagerLibrary::setCandidates(const QStringList& paths) {
    loadedLibrary().candidates = paths;
}

bool TwainManagerLibrary::load() {
    Loaded& l = loadedLibrary();
    if (l.entry)
        return true;
    const QStringList paths = l.candidates.isEmpty() ? defaultCandidates() : l.candidates;
    for (const QString& path : paths) {
        l.handle = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
        if (l.handle)
            break;
    }
    if (!l.handle)
        return false;
    l.entry = reinterpret_cast<DSMENTRYPROC>(dlsym(l.handle, "DSM_Entry"));
    if (!l.entry) {
        dlclose(l.handle);
        l.handle = nullptr;
        return false;
    }
    return true;
}

void TwainManagerLibrary::unload() {
    Loaded& l = loadedLibrary();
    if (l.handle)
        dlclose(l.handle);
    l.handle = nullptr;
    l.entry = nullptr;
}

DSMENTRYPROC TwainManagerLibrary::entry() {
    return loadedLibrary().entry;
}

} // namespace lanmira
