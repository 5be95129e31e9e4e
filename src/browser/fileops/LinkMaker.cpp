#include "browser/fileops/LinkMaker.h"

#include "i18n/i18n.h"

#include <sys/stat.h>

#include <QFile>
#include <QRandomGenerator>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace lanmira {
namespace {

QByteArray nameOf(const QByteArray& path) {
    QByteArray p = path;
    while (p.size() > 1 && p.endsWith('/'))
        p.chop(1);
    return p.mid(p.lastIndexOf('/') + 1);
}

// A new link under a free temporary name, then renamed over the old one, so a failure
// never leaves the name without a file.
bool replaceWithLink(const QByteArray& source, const QByteArray& link, int* error) {
    const qsizetype slash = link.lastIndexOf('/');
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QByteArray temp = link.left(slash + 1) + '.' + link.mid(slash + 1) + '.' +
                                QByteArray::number(QRandomGenerator::global()->generate(), 36) +
                                ".lanmira-part";
        if (::symlink(source.constData(), temp.constData()) != 0) {
            *error = errno;
            if (*error == EEXIST)
                continue;
            return false;
        }
        if (::rename(temp.constData(), link.constData()) == 0)
            return true;
        *error = errno;
        ::unlink(temp.constData());
        return false;
    }
    return false;
}

} // namespace

LinkMaker::Result LinkMaker::makeLinks(const QList<QByteArray>& sources, const QByteArray& folder,
                                       const Ask& ask) {
    Result result;
    const QByteArray base = folder.endsWith('/') ? folder : folder + '/';
    for (const QByteArray& source : sources) {
        const QByteArray name = nameOf(source);
        const QByteArray link = base + name;
        const QString shownName = QFile::decodeName(name);
        struct stat sourceStat {};
        struct stat existing {};
        if (::lstat(link.constData(), &existing) == 0) {
            // The source's own folder: "replacing" the name would swap the file for a link
            // to itself.
            if (::lstat(source.constData(), &sourceStat) == 0 &&
                sourceStat.st_dev == existing.st_dev && sourceStat.st_ino == existing.st_ino) {
                result.failed.append(shownName + QStringLiteral(": ") +
                                     i18n_stringW("ids_lanmira_transfer_itself"));
                continue;
            }
            if (S_ISDIR(existing.st_mode)) {
                result.failed.append(shownName + QStringLiteral(": ") +
                                     i18n_stringW("ids_lanmira_transfer_folderexists"));
                continue;
            }
            const Answer answer = ask ? ask(shownName) : Answer::No;
            if (answer == Answer::Cancel) {
                result.cancelled = true;
                break;
            }
            if (answer == Answer::No)
                continue;
            int error = 0;
            if (!replaceWithLink(source, link, &error)) {
                result.failed.append(shownName + QStringLiteral(": ") +
                                     QString::fromLocal8Bit(std::strerror(error)));
                continue;
            }
            ++result.made;
            continue;
        }
        if (::symlink(source.constData(), link.constData()) != 0) {
            result.failed.append(shownName + QStringLiteral(": ") +
                                 QString::fromLocal8Bit(std::strerror(errno)));
            continue;
        }
        ++result.made;
    }
    return result;
}

} // namespace lanmira
