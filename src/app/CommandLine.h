#pragma once

#include <QString>
#include <QStringList>

namespace lanmira {

// What the command line asks for. Qt's own options (-platform, -display, …) are taken out
// by QApplication before the full parse.
struct CommandLine {
    enum class Action { Run, PrintVersion, PrintHelp, Error };

    Action action = Action::Run;
    QString path;  // a file to view or a folder to browse; empty for neither
    QString error; // for Action::Error

    // args without the program name.
    static CommandLine parse(const QStringList& args);
    static QString versionText(); // "Lanmira 1.1.4004"
    static QString helpText();
};

} // namespace lanmira
