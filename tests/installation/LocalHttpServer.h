#pragma once

#include <QProcess>

#include <string>

namespace curatool::test {

// "python3 -m http.server" serving one folder on a free loopback port, for the life of the object.
class LocalHttpServer
{
public:
    explicit LocalHttpServer(const std::string& folder);
    ~LocalHttpServer();
    bool IsRunning() const { return m_port != 0; }
    // "http://127.0.0.1:<port>"
    std::string Url() const;

private:
    QProcess m_process;
    int m_port = 0;
};

}  // namespace curatool::test
