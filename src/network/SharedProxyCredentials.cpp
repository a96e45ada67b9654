#include "network/SharedProxyCredentials.h"

void SharedProxyCredentials::Connection::GetProxy(CAtlString& host, int& port, CAtlString& user, CAtlString& password)
{
    std::lock_guard<std::mutex> lock(m_shared.m_mutex);
    if (!m_shared.m_loaded && m_shared.m_observer)
        m_shared.m_observer->GetProxy(m_shared.m_host, m_shared.m_port, m_shared.m_user, m_shared.m_password);
    m_shared.m_loaded = true;
    host = m_shared.m_host;
    port = m_shared.m_port;
    user = m_shared.m_user;
    password = m_shared.m_password;
    m_answer = m_shared.m_answer;
}

bool SharedProxyCredentials::Connection::Authenticate(const CAtlString& host, int port, CAtlString& user,
                                                      CAtlString& password)
{
    // Held while the observer asks: the other connections wait for its answer instead of asking too.
    std::lock_guard<std::mutex> lock(m_shared.m_mutex);
    if (m_shared.m_refused || !m_shared.m_observer)
        return false;
    if (m_answer != m_shared.m_answer) {
        // Another connection asked since this one began: its answer is worth a try here too.
        m_answer = m_shared.m_answer;
        user = m_shared.m_user;
        password = m_shared.m_password;
        return true;
    }
    if (!m_shared.m_observer->Authenticate(host, port, user, password)) {
        m_shared.m_refused = true;
        return false;
    }
    m_shared.m_user = user;
    m_shared.m_password = password;
    m_answer = ++m_shared.m_answer;
    return true;
}

void SharedProxyCredentials::Connection::Cancelled()
{
    std::lock_guard<std::mutex> lock(m_shared.m_mutex);
    if (m_shared.m_observer)
        m_shared.m_observer->Cancelled();
}
