#pragma once

// A loopback server over one folder for the object's life, under the name the engine tests use:
// python's static server, or the scripted server serving the folder with the behaviour asked for.

#include "LoopbackServers.h"

#include <string>
#include <vector>

namespace curatool::test {

class LocalHttpServer {
public:
    explicit LocalHttpServer(const std::string& folder) { m_server.StartStaticServer(QString::fromStdString(folder)); }

    // How the scripted server of the network tests serves the folder instead.
    struct Behaviour {
        int delayMs = 0;                   // every reply held back this long
        std::vector<std::string> stalled;  // file names never answered
        std::vector<std::string> missing;  // file names answered with 404
        std::string proxyAuth;             // "user:pass" wanted from a request through a proxy
        std::string log;                   // request lines go here
    };
    LocalHttpServer(const std::string& folder, const Behaviour& behaviour)
    {
        QStringList options{QStringLiteral("--folder"), QString::fromStdString(folder), QStringLiteral("--delay"),
                            QString::number(behaviour.delayMs)};
        for (const std::string& name : behaviour.stalled)
            options << QStringLiteral("--stall") << QString::fromStdString(name);
        for (const std::string& name : behaviour.missing)
            options << QStringLiteral("--missing") << QString::fromStdString(name);
        if (!behaviour.proxyAuth.empty())
            options << QStringLiteral("--proxy-auth") << QString::fromStdString(behaviour.proxyAuth);
        m_server.StartScriptedServer(QString::fromStdString(behaviour.log.empty() ? "/dev/null" : behaviour.log),
                                     options);
    }

    bool IsRunning() const { return m_server.IsRunning(); }
    // "http://127.0.0.1:<port>"
    std::string Url() const { return HttpUrl(m_server.Port(), QString()).toStdString(); }

private:
    ServerProcess m_server;
};

}  // namespace curatool::test
