#include "LocalHttpServer.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

namespace curatool::test {

namespace {

int FreePort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 0;
    return probe.serverPort();
}

bool Accepts(int port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
    return socket.waitForConnected(200);
}

}  // namespace

LocalHttpServer::LocalHttpServer(const std::string& folder)
{
    const int port = FreePort();
    if (port == 0)
        return;
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.start(QStringLiteral("python3"), {QStringLiteral("-m"), QStringLiteral("http.server"),
                                                QString::number(port), QStringLiteral("--bind"),
                                                QStringLiteral("127.0.0.1"), QStringLiteral("--directory"),
                                                QString::fromStdString(folder)});
    if (!m_process.waitForStarted(5000))
        return;
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 10000)
    {
        if (Accepts(port))
        {
            m_port = port;
            return;
        }
        QThread::msleep(50);
    }
}

LocalHttpServer::LocalHttpServer(const std::string& folder, const Behaviour& behaviour)
{
    QStringList arguments{QStringLiteral(CURATOOL_SOURCE_DIR "/tests/network/data/scripted_http_server.py"),
                          QString::fromStdString(behaviour.log.empty() ? "/dev/null" : behaviour.log),
                          QStringLiteral("--folder"), QString::fromStdString(folder),
                          QStringLiteral("--delay"), QString::number(behaviour.delayMs)};
    for (const std::string& name : behaviour.stalled)
        arguments << QStringLiteral("--stall") << QString::fromStdString(name);
    for (const std::string& name : behaviour.missing)
        arguments << QStringLiteral("--missing") << QString::fromStdString(name);
    if (!behaviour.proxyAuth.empty())
        arguments << QStringLiteral("--proxy-auth") << QString::fromStdString(behaviour.proxyAuth);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(QStringLiteral("python3"), arguments);
    if (!m_process.waitForStarted(5000))
        return;
    // The script tells its port on its first line.
    while (!m_process.canReadLine())
        if (!m_process.waitForReadyRead(10000))
            return;
    const int port = m_process.readLine().trimmed().toInt();
    if (port > 0 && Accepts(port))
        m_port = port;
}

LocalHttpServer::~LocalHttpServer()
{
    if (m_process.state() != QProcess::NotRunning)
    {
        m_process.terminate();
        if (!m_process.waitForFinished(3000))
        {
            m_process.kill();
            m_process.waitForFinished(3000);
        }
    }
}

std::string LocalHttpServer::Url() const
{
    return "http://127.0.0.1:" + std::to_string(m_port);
}

}  // namespace curatool::test
