#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QProcess;
class QWidget;

// Runs a program as another user through whichever privilege tool the desktop offers: kdesu,
// then gksudo, then sudo (whose password we feed ourselves). Used to relaunch the tool with the
// rights to write to the shared gallery folders.
class CAuthentication : public QObject {
    Q_OBJECT
public:
    explicit CAuthentication(QWidget* parent = nullptr);

    // The child's exit code; 0 when no tool is found; -1 for a child that did not start or finish.
    int RunAs(const QString& program, const QStringList& arguments, const QString& user, bool echo);

    static bool HasKdesu();
    static bool HasGksudo();
    static bool HasSudo();

    // True when a file of this name is in one of the PATH directories.
    static bool FindInPath(const QString& name);

    // A backslash in front of every character the shell would take for itself.
    static QString ShellEscape(const QString& text);

    // The argument lists handed to each tool; separate so that they can be checked on their own.
    static QStringList KdesuArguments(const QString& program, const QStringList& arguments, const QString& user);
    static QStringList GksudoArguments(const QString& program, const QStringList& arguments, const QString& user);
    static QStringList SudoArguments(const QString& program, const QStringList& arguments, const QString& user);

private:
    int RunDesktopTool(const QString& tool, const QStringList& toolArguments, bool echo);
    int RunSudo(const QString& program, const QStringList& arguments, const QString& user, bool echo);
    // Asks for the password and writes it to sudo; false when the user cancels.
    bool AnswerPasswordRequest(QProcess& process, const QString& user, int request);

    QWidget* m_parent;
};
