#pragma once

#include <QProcess>

#include <string>
#include <vector>

namespace curatool::test {

// "python3 -m http.server" serving one folder on a free loopback port, for the life of the object.
class LocalHttpServer
{
public:
    explicit LocalHttpServer(const std::string& folder);

    // How the scripted server of the network tests serves the folder instead.
    struct Behaviour
    {
        int delayMs = 0;                   // every reply held back this long
        std::vector<std::string> stalled;  // file names never answered
        std::vector<std::string> missing;  // file names answered with 404
        std::string proxyAuth;             // "user:pass" wanted from a request through a proxy
        std::string log;                   // request lines go here
    };
    LocalHttpServer(const std::string& folder, const Behaviour& behaviour);
    ~LocalHttpServer();
    bool IsRunning() const { return m_port != 0; }
    // "http://127.0.0.1:<port>"
    std::string Url() const;

private:
    QProcess m_process;
    int m_port = 0;
};

}  // namespace curatool::test
