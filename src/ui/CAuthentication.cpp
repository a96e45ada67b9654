#include "ui/CAuthentication.h"

#include "ui/CPasswordDialog.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QProcess>

#include <cstdio>
#include <cstdlib>

namespace {

const char kPasswordPrompt[] = "PASSWORD:";

// Keeps the wait cursor up for exactly as long as the tool blocks us.
class WaitCursor {
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

void PrependUser(QStringList& arguments, const QString& user)
{
    if (!user.isEmpty())
        arguments << QStringLiteral("-u") << user;
}

}  // namespace

CAuthentication::CAuthentication(QWidget* parent)
    : QObject(parent),
      m_parent(parent)
{}

bool CAuthentication::FindInPath(const QString& name)
{
    const char* path = std::getenv("PATH");
    if (!path)
        return false;
    const QStringList directories = QString::fromLocal8Bit(path).split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QString& directory : directories) {
        if (QFile::exists(directory + QLatin1Char('/') + name))
            return true;
    }
    return false;
}

bool CAuthentication::HasKdesu()
{
    return FindInPath(QStringLiteral("kdesu"));
}

bool CAuthentication::HasGksudo()
{
    return FindInPath(QStringLiteral("gksudo"));
}

bool CAuthentication::HasSudo()
{
    return FindInPath(QStringLiteral("sudo"));
}

QString CAuthentication::ShellEscape(const QString& text)
{
    static const QString special = QStringLiteral(" ~`!#&*()\\|?<>\"';");
    QString escaped;
    escaped.reserve(text.size() * 2);
    for (QChar c : text) {
        if (special.contains(c))
            escaped += QLatin1Char('\\');
        escaped += c;
    }
    return escaped;
}

QStringList CAuthentication::KdesuArguments(const QString& program, const QStringList& arguments, const QString& user)
{
    QString quoted = program;
    quoted.replace(QLatin1String(" "), QLatin1String("\\ "));
    quoted = QLatin1Char('\'') + quoted + QLatin1Char('\'');

    QStringList result;
    PrependUser(result, user);
    result << QStringLiteral("--") << quoted << arguments;
    return result;
}

QStringList CAuthentication::GksudoArguments(const QString& program, const QStringList& arguments, const QString& user)
{
    QString command = ShellEscape(program);
    for (const QString& argument : arguments)
        command += QLatin1Char(' ') + ShellEscape(argument);

    QStringList result;
    PrependUser(result, user);
    result << command;
    return result;
}

QStringList CAuthentication::SudoArguments(const QString& program, const QStringList& arguments, const QString& user)
{
    QStringList result{QStringLiteral("-p"), QString::fromLatin1(kPasswordPrompt), QStringLiteral("-S")};
    PrependUser(result, user);
    result << program << arguments;
    return result;
}

int CAuthentication::RunAs(const QString& program, const QStringList& arguments, const QString& user, bool echo)
{
    if (HasKdesu())
        return RunDesktopTool(QStringLiteral("kdesu"), KdesuArguments(program, arguments, user), echo);
    if (HasGksudo())
        return RunDesktopTool(QStringLiteral("gksudo"), GksudoArguments(program, arguments, user), echo);
    if (HasSudo())
        return RunSudo(program, arguments, user, echo);
    return 0;
}

int CAuthentication::RunDesktopTool(const QString& tool, const QStringList& toolArguments, bool echo)
{
    QProcess process;
    if (echo) {
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(tool, toolArguments, QIODevice::ReadOnly);
    } else {
        process.start(tool, toolArguments);
    }

    if (!process.waitForStarted(30000) || process.state() != QProcess::Running)
        return -1;

    WaitCursor cursor;
    process.waitForFinished(-1);
    return process.exitCode();
}

int CAuthentication::RunSudo(const QString& program, const QStringList& arguments, const QString& user, bool echo)
{
    // sudo itself is told no user when none was given; "root" is only what the dialog shows.
    const QString shownUser = user.isEmpty() ? QStringLiteral("root") : user;

    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    WaitCursor cursor;
    process.start(QStringLiteral("sudo"), SudoArguments(program, arguments, user), QIODevice::ReadWrite);
    if (!process.waitForStarted(10000)) {
        if (process.state() != QProcess::NotRunning)
            process.terminate();
        return -1;
    }

    int requests = 0;
    while (process.state() == QProcess::Running && process.waitForReadyRead(-1)) {
        const QByteArray output = process.readAll();
        if (echo) {
            std::printf("%s", output.constData());
            std::fflush(stdout);
        }
        if (!QString::fromLocal8Bit(output).trimmed().endsWith(QLatin1String(kPasswordPrompt)))
            continue;
        if (!AnswerPasswordRequest(process, shownUser, ++requests)) {
            process.terminate();
            break;
        }
    }

    if (process.state() != QProcess::NotRunning)
        process.waitForFinished(-1);
    return process.exitCode();
}

bool CAuthentication::AnswerPasswordRequest(QProcess& process, const QString& user, int request)
{
    // sudo asks again only when the previous answer was wrong.
    if (request > 1) {
        QMessageBox::warning(m_parent, tr("Authentication"), tr("Incorrect password. Please try again."),
                             QMessageBox::Ok);
    }

    QString userName = user;
    QString password;
    CPasswordDialog dialog(m_parent, userName, password, true);
    if (dialog.exec() != QDialog::Accepted)
        return false;

    QByteArray answer = password.toUtf8();
    answer += '\n';
    process.write(answer);
    process.waitForBytesWritten(-1);
    answer.fill('\0');
    password.fill(QChar(0));
    return true;
}
