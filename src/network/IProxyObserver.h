#pragma once

#include "libZoltaAtl/CAtlString.h"

// What the download layer needs to know of the proxy, and whom it tells when the proxy asks for
// credentials, when a fetch was given up, and how far the running fetch has come.
class IProxyObserver {
public:
    virtual ~IProxyObserver() = default;

    virtual void GetProxy(CAtlString& host, int& port, CAtlString& user, CAtlString& password) = 0;
    // Called on a 407 reply. True hands out credentials worth another try in `user` and `password`.
    virtual bool Authenticate(const CAtlString& host, int port, CAtlString& user, CAtlString& password) = 0;
    virtual void Cancelled() = 0;
    virtual void ReadProgress(int done, int total) = 0;
};
