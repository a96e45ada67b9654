#include "LoopbackServers.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

namespace curatool::test {

namespace {

constexpr int kStartTimeoutMs = 15000;

}  // namespace

int FreeLoopbackPort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 0;
    return probe.serverPort();
}

QString HttpUrl(int port, const QString& path)
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(port).arg(path);
}

ServerProcess::~ServerProcess()
{
    if (m_process && m_process->state() != QProcess::NotRunning) {
        m_process->kill();
        m_process->waitForFinished(5000);
    }
}

bool ServerProcess::IsRunning() const
{
    return m_process && m_process->state() == QProcess::Running;
}

bool ServerProcess::Launch(const QString& program, const QStringList& arguments, bool portOnStdout)
{
    m_process = std::make_unique<QProcess>();
    if (!portOnStdout)
        m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setStandardErrorFile(QProcess::nullDevice());
    m_process->start(program, arguments);
    if (!m_process->waitForStarted(kStartTimeoutMs))
        return false;
    if (portOnStdout) {
        while (!m_process->canReadLine()) {
            if (!m_process->waitForReadyRead(kStartTimeoutMs))
                return false;
        }
        m_port = m_process->readLine().trimmed().toInt();
    }
    return m_port > 0 && WaitUntilListening();
}

bool ServerProcess::WaitUntilListening()
{
    const QDeadlineTimer deadline(kStartTimeoutMs);
    while (!deadline.hasExpired() && IsRunning()) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(m_port));
        if (probe.waitForConnected(1000))
            return true;
        QThread::msleep(50);
    }
    return false;
}

bool ServerProcess::StartStaticServer(const QString& folder)
{
    m_port = FreeLoopbackPort();
    return Launch(QStringLiteral("python3"),
                  {QStringLiteral("-m"), QStringLiteral("http.server"), QString::number(m_port),
                   QStringLiteral("--bind"), QStringLiteral("127.0.0.1"), QStringLiteral("--directory"), folder},
                  false);
}

bool ServerProcess::StartScriptedServer(const QString& logFile, const QStringList& options)
{
    return Launch(QStringLiteral("python3"),
                  QStringList{QStringLiteral(CURATOOL_SUPPORT_DATA_DIR "/scripted_http_server.py"), logFile} + options,
                  true);
}

bool ServerProcess::StartSocksServer(const QString& user, const QString& password, const QString& logFile)
{
    return Launch(QStringLiteral("python3"),
                  {QStringLiteral(CURATOOL_SUPPORT_DATA_DIR "/socks5_server.py"), user, password, logFile}, true);
}

bool ServerProcess::StartTinyproxy(const QString& folder, const QString& user, const QString& password)
{
    m_port = FreeLoopbackPort();
    const QString config = folder + QStringLiteral("/tinyproxy.conf");
    QFile file(config);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QStringLiteral("Port %1\nListen 127.0.0.1\nTimeout 60\nMaxClients 20\nAllow 127.0.0.1\n"
                              "LogLevel Critical\nBasicAuth %2 %3\n")
                   .arg(m_port)
                   .arg(user, password)
                   .toUtf8());
    file.close();
    return Launch(QStringLiteral("tinyproxy"), {QStringLiteral("-d"), QStringLiteral("-c"), config}, false);
}

}  // namespace curatool::test
