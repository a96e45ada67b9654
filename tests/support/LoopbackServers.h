#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <memory>

namespace curatool::test {

// A helper server in a process of its own, killed when this goes.
class ServerProcess {
public:
    ServerProcess() = default;
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    int Port() const { return m_port; }
    bool IsRunning() const;

    // python3 -m http.server serving `folder` on a free loopback port.
    bool StartStaticServer(const QString& folder);
    // The misbehaving server of data/scripted_http_server.py; request lines go to `logFile`,
    // `options` follow it on the script's command line.
    bool StartScriptedServer(const QString& logFile, const QStringList& options = {});
    // The SOCKS 5 proxy of data/socks5_server.py; authentication attempts go to `logFile`.
    bool StartSocksServer(const QString& user, const QString& password, const QString& logFile);
    // tinyproxy in the foreground on a free loopback port, asking for Basic credentials.
    bool StartTinyproxy(const QString& folder, const QString& user, const QString& password);

private:
    bool Launch(const QString& program, const QStringList& arguments, bool portOnStdout);
    bool WaitUntilListening();

    std::unique_ptr<QProcess> m_process;
    int m_port = 0;
};

// A loopback port that nobody listens on right now.
int FreeLoopbackPort();

QString HttpUrl(int port, const QString& path);

}  // namespace curatool::test
