#include "browser/filetypes/DesktopEntryWriter.h"

#include "platform/XdgPaths.h"
#include "settings/AtomicWrite.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace lanmira {

QString DesktopEntryWriter::applicationsFolder(const QString& dataHome) {
    return (dataHome.isEmpty() ? XdgPaths::dataHome() : dataHome) + u"/applications"_s;
}

QString DesktopEntryWriter::execArgument(const QString& argument) {
    static const QString reserved = uR"( 	"'\><~|&;$*?#()`)"_s;
    bool quote = argument.isEmpty();
    for (QChar c : argument)
        quote = quote || reserved.contains(c) || c == u'\n';
    QString arg;
    if (!quote) {
        arg = argument;
    } else {
        arg = u"\""_s;
        for (QChar c : argument) {
            if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
                arg += u'\\';
            arg += c;
        }
        arg += u'"';
    }
    // The key's value is a string, whose own escapes come on top of the quoting; a "%" would
    // otherwise be read as a field code.
    QString out;
    for (QChar c : arg) {
        if (c == u'\\')
            out += u"\\\\"_s;
        else if (c == u'\n')
            out += u"\\n"_s;
        else if (c == u'%')
            out += u"%%"_s;
        else
            out += c;
    }
    return out;
}

QString DesktopEntryWriter::entryText(const QString& name, const QString& programPath,
                                      const QStringList& mimeTypes) {
    QString text = u"[Desktop Entry]\nType=Application\nName="_s + name +
                   u"\nIcon=org.vornalt.Lanmira\nExec="_s + execArgument(programPath) +
                   u" %f\nTerminal=false\nNoDisplay=true\nMimeType="_s;
    for (const QString& type : mimeTypes)
        text += type + u';';
    text += u'\n';
    return text;
}

DesktopEntryWriter::Outcome DesktopEntryWriter::ensure(const QString& dataHome,
                                                       const QString& text) {
    const QString path = applicationsFolder(dataHome) + u'/' + QString::fromLatin1(kFileName);
    const QByteArray wanted = text.toUtf8();
    QFile existing(path);
    if (existing.open(QIODevice::ReadOnly) && existing.size() == wanted.size() &&
        existing.readAll() == wanted)
        return Unchanged;
    return settings::writeFileAtomically(QFile::encodeName(path).toStdString(),
                                         std::string_view(wanted.constData(), wanted.size()))
               ? Written
               : Failed;
}

} // namespace lanmira
