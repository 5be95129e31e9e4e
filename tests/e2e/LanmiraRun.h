#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <string>

namespace lanmira::e2e {

// A private installation of the real program in a temporary prefix (bin/, share/lanmira/),
// with its own XDG folders, driven under the X server the test runs in.
class LanmiraRun {
public:
    LanmiraRun();
    ~LanmiraRun();

    QString prefix() const { return m_dir.path() + QStringLiteral("/prefix"); }
    QString program() const {
        return m_program.isEmpty() ? prefix() + QStringLiteral("/bin/lanmira") : m_program;
    }
    // Runs another copy of the program (an installed one) instead of the private one.
    void setProgram(const QString& path) { m_program = path; }
    QString scratch() const { return m_dir.path(); }
    QString configHome() const { return m_dir.path() + QStringLiteral("/config"); }
    QString runtimeDir() const { return m_dir.path() + QStringLiteral("/run"); }
    QString profileInShare() const {
        return prefix() + QStringLiteral("/share/lanmira/lanmira.exml");
    }
    QString profileInParent() const { return prefix() + QStringLiteral("/lanmira.exml"); }

    // Writes a profile from XML text with the default key into `path`.
    static bool writeProfile(const QString& xml, const QString& path);

    void setEnv(const QString& name, const QString& value) { m_env.insert(name, value); }
    QProcessEnvironment environment() const { return m_env; }

    // Starts the program; it keeps running until stopped or finished.
    QProcess& start(const QStringList& args = {});
    QProcess& process() { return *m_process; }
    // Runs a second, separate copy to its end and returns its exit code (or -1 on timeout).
    int runToEnd(const QStringList& args, int timeoutMs, QString* stdoutText = nullptr,
                 QString* stderrText = nullptr);
    bool waitForExit(int timeoutMs);
    // Signals the running program; does nothing once it has ended (a pid of 0 would signal
    // the whole process group, test runner included).
    void signal(int signo);
    // What a failed wait needs to be understood: the program's stderr, the windows the X
    // server has, and where the program's threads are.
    std::string diagnose();

    // X window ids of visible windows whose name matches the regular expression, on the
    // test's display or the one given (":N").
    static QStringList findWindows(const QString& namePattern, const QString& display = {},
                                   qint64 pid = 0);
    static bool waitForWindow(const QString& namePattern, int timeoutMs, QString* id = nullptr,
                              const QString& display = {}, qint64 pid = 0);
    // The same, limited to this run's program: X reuses window ids of programs that ended.
    bool waitForOwnWindow(const QString& namePattern, int timeoutMs, QString* id = nullptr);
    bool ownWindowShown(const QString& id);
    static bool xdotool(const QStringList& args);

private:
    QTemporaryDir m_dir;
    QString m_program;
    QProcessEnvironment m_env;
    std::unique_ptr<QProcess> m_process;
};

// The browser's window title, and how long a start may take (sanitizer builds are slow).
inline const QString kMainWindow = QStringLiteral("^Lanmira$");
constexpr int kStartMs = 30000;

// Polls `done` every 150 ms until it holds; false when `timeoutMs` passed first.
bool waitFor(const std::function<bool()>& done, int timeoutMs);
// Runs a tool to its end with `input` on its standard input; its standard output, or
// nothing when it failed or took over 20 s.
QByteArray runTool(const QString& program, const QStringList& args, const QByteArray& input = {});

} // namespace lanmira::e2e
