#include "LanmiraRun.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <csignal>

namespace lanmira::e2e {
namespace {

const QString kBuild = QStringLiteral(LANMIRA_BUILD_DIR);
const QString kSource = QStringLiteral(LANMIRA_SOURCE_DIR);

bool copyTree(const QString& from, const QString& to) {
    QDir().mkpath(to);
    const QDir src(from);
    for (const QFileInfo& fi : src.entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString target = to + u'/' + fi.fileName();
        if (fi.isDir()) {
            if (!copyTree(fi.filePath(), target))
                return false;
        } else if (!QFile::copy(fi.filePath(), target)) {
            return false;
        }
    }
    return true;
}

} // namespace

LanmiraRun::LanmiraRun() {
    QDir().mkpath(prefix() + QStringLiteral("/bin"));
    QFile::copy(kBuild + QStringLiteral("/bin/lanmira"), program());
    QFile::setPermissions(program(), QFile::permissions(kBuild + QStringLiteral("/bin/lanmira")));
    copyTree(kBuild + QStringLiteral("/share/lanmira"),
             prefix() + QStringLiteral("/share/lanmira"));
    QDir().mkpath(configHome());
    QDir().mkpath(runtimeDir());
    QFile::setPermissions(runtimeDir(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    m_env = QProcessEnvironment::systemEnvironment();
    m_env.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome());
    m_env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeDir());
    m_env.insert(QStringLiteral("XDG_CACHE_HOME"), m_dir.path() + QStringLiteral("/cache"));
    m_env.insert(QStringLiteral("XDG_DATA_HOME"), m_dir.path() + QStringLiteral("/data"));
    for (const char* v : {"LANGUAGE", "LC_ALL", "LC_MESSAGES"})
        m_env.remove(QString::fromLatin1(v));
    m_env.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    m_env.remove(QStringLiteral("QT_QPA_PLATFORM"));
}

LanmiraRun::~LanmiraRun() {
    if (m_process && m_process->state() != QProcess::NotRunning) {
        m_process->kill();
        m_process->waitForFinished(5000);
    }
}

bool LanmiraRun::writeProfile(const QString& xml, const QString& path) {
    QTemporaryDir tmp;
    const QString xmlPath = tmp.path() + QStringLiteral("/profile.xml");
    QFile f(xmlPath);
    if (!f.open(QIODevice::WriteOnly))
        return false;
    f.write(xml.toUtf8());
    f.close();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QProcess writer;
    writer.start(kBuild + QStringLiteral("/tools/lanmira-profile-writer"),
                 {QStringLiteral("--key"),
                  kSource + QStringLiteral("/tools/default-profile-key.pem"), xmlPath, path});
    return writer.waitForFinished(20000) && writer.exitStatus() == QProcess::NormalExit &&
           writer.exitCode() == 0;
}

QProcess& LanmiraRun::start(const QStringList& args) {
    m_process = std::make_unique<QProcess>();
    m_process->setProcessEnvironment(m_env);
    m_process->start(program(), args);
    m_process->waitForStarted(10000);
    return *m_process;
}

int LanmiraRun::runToEnd(const QStringList& args, int timeoutMs, QString* stdoutText,
                         QString* stderrText) {
    QProcess p;
    p.setProcessEnvironment(m_env);
    p.start(program(), args);
    if (!p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished(5000);
        return -1;
    }
    if (stdoutText)
        *stdoutText = QString::fromUtf8(p.readAllStandardOutput());
    if (stderrText)
        *stderrText = QString::fromUtf8(p.readAllStandardError());
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

void LanmiraRun::signal(int signo) {
    if (!m_process || m_process->state() != QProcess::Running)
        return;
    const qint64 pid = m_process->processId();
    if (pid > 0)
        ::kill(static_cast<pid_t>(pid), signo);
}

bool LanmiraRun::waitForExit(int timeoutMs) {
    if (!m_process)
        return false;
    // waitForFinished() answers false for a process that has already ended.
    return m_process->state() == QProcess::NotRunning || m_process->waitForFinished(timeoutMs);
}

std::string LanmiraRun::diagnose() {
    QString out;
    if (m_process) {
        m_process->waitForReadyRead(200);
        out += QStringLiteral("state %1, stderr: ").arg(m_process->state()) +
               QString::fromUtf8(m_process->readAllStandardError());
    }
    QProcess xd;
    xd.start(QStringLiteral("xdotool"),
             {QStringLiteral("search"), QStringLiteral("--name"), QStringLiteral(".")});
    xd.waitForFinished(5000);
    out += QStringLiteral("\nxdotool (%1): ").arg(xd.exitCode()) +
           QString::fromUtf8(xd.readAllStandardOutput() + xd.readAllStandardError());
    if (m_process && m_process->state() == QProcess::Running) {
        QProcess gdb;
        gdb.start(QStringLiteral("gdb"),
                  {QStringLiteral("-p"), QString::number(m_process->processId()),
                   QStringLiteral("-batch"), QStringLiteral("-ex"),
                   QStringLiteral("thread apply all bt 12")});
        gdb.waitForFinished(30000);
        out += QStringLiteral("\nbacktrace:\n") + QString::fromUtf8(gdb.readAllStandardOutput());
    }
    return out.toStdString();
}

QStringList LanmiraRun::findWindows(const QString& namePattern, const QString& display,
                                    qint64 pid) {
    QProcess p;
    if (!display.isEmpty()) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), display);
        p.setProcessEnvironment(env);
    }
    QStringList args = {QStringLiteral("search"), QStringLiteral("--onlyvisible")};
    if (pid > 0) // xdotool matches any criterion unless told to require all
        args << QStringLiteral("--all") << QStringLiteral("--pid") << QString::number(pid);
    args << QStringLiteral("--name") << namePattern;
    p.start(QStringLiteral("xdotool"), args);
    p.waitForFinished(5000);
    return QString::fromUtf8(p.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

bool LanmiraRun::waitForOwnWindow(const QString& namePattern, int timeoutMs, QString* id) {
    return m_process && waitForWindow(namePattern, timeoutMs, id, {}, m_process->processId());
}

bool LanmiraRun::ownWindowShown(const QString& id) {
    return m_process && m_process->state() == QProcess::Running &&
           findWindows(QStringLiteral("."), {}, m_process->processId()).contains(id);
}

bool LanmiraRun::waitForWindow(const QString& namePattern, int timeoutMs, QString* id,
                               const QString& display, qint64 pid) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < timeoutMs) {
        const QStringList ids = findWindows(namePattern, display, pid);
        if (!ids.isEmpty()) {
            // Mapped is not yet ready for input: give the toolkit a moment to settle.
            QThread::msleep(300);
            if (id)
                *id = ids.first();
            return true;
        }
        QThread::msleep(100);
    }
    return false;
}

bool LanmiraRun::xdotool(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral("xdotool"), args);
    const bool ok = p.waitForFinished(10000) && p.exitCode() == 0;
    if (!args.isEmpty() && args.first() == QStringLiteral("key")) {
        // xdotool dies on an X error (the window went away under it), possibly between
        // pressing a key and letting it go; a key left down repeats into every window shown
        // later on the same display.
        QStringList keys;
        for (qsizetype i = 1; i < args.size(); ++i) {
            if (args[i] == QStringLiteral("--window") || args[i] == QStringLiteral("--delay") ||
                args[i] == QStringLiteral("--repeat"))
                ++i;
            else if (!args[i].startsWith(QStringLiteral("--")))
                keys.append(args[i]);
        }
        QProcess release;
        release.start(QStringLiteral("xdotool"), QStringList{QStringLiteral("keyup")} + keys);
        release.waitForFinished(10000);
    }
    return ok;
}

bool waitFor(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer t;
    t.start();
    while (!done()) {
        if (t.elapsed() > timeoutMs)
            return false;
        QThread::msleep(150);
    }
    return true;
}

QByteArray runTool(const QString& program, const QStringList& args, const QByteArray& input) {
    QProcess p;
    p.start(program, args);
    if (!input.isEmpty()) {
        p.write(input);
        p.closeWriteChannel();
    }
    if (!p.waitForFinished(20000)) {
        p.kill();
        p.waitForFinished();
        return {};
    }
    return p.exitCode() == 0 ? p.readAllStandardOutput() : QByteArray();
}

} // namespace lanmira::e2e
