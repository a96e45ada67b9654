#pragma once

#include "network/IProxyObserver.h"

#include "libZoltaAtl/CAtlString.h"

#include <mutex>

// One proxy observer shared by several connections at once. When the proxy asks for credentials
// on several of them, the observer is asked once: the first connection asks, and the others take
// the answer it got instead of asking again. A refusal holds for all of them. Each connection
// works through a Connection of its own, on any thread.
class SharedProxyCredentials {
public:
    // `observer` may be null: no proxy then, and a 407 is refused.
    explicit SharedProxyCredentials(IProxyObserver* observer)
        : m_observer(observer)
    {}

    class Connection : public IProxyObserver {
    public:
        explicit Connection(SharedProxyCredentials& shared)
            : m_shared(shared)
        {}

        void GetProxy(CAtlString& host, int& port, CAtlString& user, CAtlString& password) override;
        bool Authenticate(const CAtlString& host, int port, CAtlString& user, CAtlString& password) override;
        void Cancelled() override;
        // Bytes go to the fetch's own progress observer.
        void ReadProgress(int, int) override {}

    private:
        SharedProxyCredentials& m_shared;
        unsigned m_answer = 0;  // which of the shared answers this connection last used
    };

private:
    std::mutex m_mutex;
    IProxyObserver* m_observer;
    bool m_loaded = false;
    CAtlString m_host;
    int m_port = 0;
    CAtlString m_user;
    CAtlString m_password;
    unsigned m_answer = 0;  // counts the observer's answers
    bool m_refused = false;
};
