#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace lanmira {

// Makes a symbolic link to each source in a folder, named after the source (a source that
// is itself a link keeps its name too: no suffix is added). An existing name is replaced
// only when the user says so.
class LinkMaker {
public:
    enum class Answer { Yes, No, Cancel };
    // Gets the link's file name; the answer to "replace it?".
    using Ask = std::function<Answer(const QString& linkName)>;

    struct Result {
        int made = 0;
        bool cancelled = false;
        QStringList failed; // "name: reason"
    };

    static Result makeLinks(const QList<QByteArray>& sources, const QByteArray& folder,
                            const Ask& ask);
};

} // namespace lanmira
