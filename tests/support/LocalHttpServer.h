#pragma once

// The static loopback server under its older name: one folder over HTTP for the object's life.

#include "LoopbackServers.h"

#include <string>

namespace curatool::test {

class LocalHttpServer
{
public:
    explicit LocalHttpServer(const std::string& folder) { m_server.StartStaticServer(QString::fromStdString(folder)); }
    bool IsRunning() const { return m_server.IsRunning(); }
    // "http://127.0.0.1:<port>"
    std::string Url() const { return HttpUrl(m_server.Port(), QString()).toStdString(); }

private:
    ServerProcess m_server;
};

}  // namespace curatool::test
