#pragma once

#include "libZoltaAtl/CAtlString.h"

// The narrow view of the proxy settings that one fetch works with: where to connect and how, with
// which credentials, and the three callbacks the fetch makes. Kept apart from IProxyObserver so
// that the download code does not depend on the observer's class.
class ConnectionInfoBase {
public:
    // How the fetch reaches the server.
    enum eProxyType {
        eProxyNone = 0,     // straight to the server
        eProxySocks5 = 1,   // through a SOCKS 5 proxy
        eProxyHttp = 2,     // through an HTTP proxy, which is handed the full URL
        eProxyDefault = 3,  // through the application-wide proxy of the process
    };

    virtual ~ConnectionInfoBase() = default;

    virtual void Cancelled() = 0;
    virtual bool Authenticate(const CAtlString& host, int port, CAtlString& user, CAtlString& password) = 0;
    virtual void ReadProgress(int done, int total) = 0;

    CAtlString user;
    CAtlString password;
    CAtlString host;
    int port = 0;
    int type = eProxyNone;
};

// Binds the callbacks to members of any observer class. A callback whose observer or member is
// not set does nothing (Authenticate then refuses).
template <class Observer>
class ConnectionInfo : public ConnectionInfoBase {
public:
    using AuthenticateMember = bool (Observer::*)(const CAtlString&, int, CAtlString&, CAtlString&);
    using CancelledMember = void (Observer::*)();
    using ReadProgressMember = void (Observer::*)(int, int);

    explicit ConnectionInfo(Observer* observer = nullptr)
        : m_observer(observer)
    {}

    void Bind(Observer* observer, AuthenticateMember authenticate, CancelledMember cancelled,
              ReadProgressMember readProgress)
    {
        m_observer = observer;
        m_authenticate = authenticate;
        m_cancelled = cancelled;
        m_readProgress = readProgress;
    }

    void Cancelled() override
    {
        if (m_observer && m_cancelled)
            (m_observer->*m_cancelled)();
    }

    bool Authenticate(const CAtlString& askingHost, int askingPort, CAtlString& userName,
                      CAtlString& userPassword) override
    {
        if (!m_observer || !m_authenticate)
            return false;
        return (m_observer->*m_authenticate)(askingHost, askingPort, userName, userPassword);
    }

    void ReadProgress(int done, int total) override
    {
        if (m_observer && m_readProgress)
            (m_observer->*m_readProgress)(done, total);
    }

private:
    AuthenticateMember m_authenticate = nullptr;
    CancelledMember m_cancelled = nullptr;
    ReadProgressMember m_readProgress = nullptr;
    Observer* m_observer = nullptr;
};
