#include "network/ProxyHandler.h"

#include "foundation/CSettingsStore.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

const wchar_t* const ProxyHandler::kStoreName = L"com.zoltaworks.Registry";
const wchar_t* const ProxyHandler::kSection =
    L"Software/ZOLTA Technologies Inc./ZOLTA Tavolite Software/ProxyInformation";
const wchar_t* const ProxyHandler::kHostKey = L"HttpProxyHost";
const wchar_t* const ProxyHandler::kPortKey = L"HttpProxyPort";

// The proxy settings are shared with other programs, so they live in the store's fixed file and
// not under this tool's identity.
void ProxyHandler::LoadSettings()
{
    CSettingsStore::BlankIdentity identity;
    m_host = CSettingsStore::ReadString(true, kSection, kHostKey, CAtlString(), nullptr, kStoreName);
    m_port = CSettingsStore::ReadInt(true, kSection, kPortKey, kDefaultPort, nullptr, kStoreName);
}

bool ProxyHandler::SaveSettings()
{
    CSettingsStore::BlankIdentity identity;
    CSettingsStore::WriteString(true, kSection, kHostKey, m_host, kStoreName);
    return CSettingsStore::WriteInt(true, kSection, kPortKey, m_port, kStoreName) == CSettingsStore::eStatusOk;
}

void ProxyHandler::SetHost(const CAtlString& host)
{
    m_host = host;
}

void ProxyHandler::SetCredentials(const CAtlString& user, const CAtlString& password)
{
    m_user = user;
    m_password = password;
}

void ProxyHandler::SetAllowPrompt(bool allow)
{
    m_allowPrompt = allow;
}

void ProxyHandler::SetPrompt(ProxyPrompt prompt)
{
    m_prompt = std::move(prompt);
}

void ProxyHandler::GetProxy(CAtlString& host, int& port, CAtlString& user, CAtlString& password)
{
    host = m_host;
    port = m_port;
    user = m_user;
    password = m_password;
}

bool ProxyHandler::Authenticate(const CAtlString& host, int port, CAtlString& user, CAtlString& password)
{
    if (m_userCancelled)
        return false;
    if (!m_credentialsTried && !m_user.IsEmpty()) {
        m_credentialsTried = true;
        user = m_user;
        password = m_password;
        return true;
    }
    if (!m_allowPrompt)
        return false;

    ProxyPromptValues values{host, port, m_user, m_password};
    if (!RunPrompt(values, false, nullptr)) {
        m_userCancelled = true;
        return false;
    }
    m_user = values.user;
    m_password = values.password;
    m_credentialsTried = true;
    user = m_user;
    password = m_password;
    return true;
}

void ProxyHandler::Cancelled()
{
    m_userCancelled = true;
}

void ProxyHandler::ReadProgress(int, int)
{}

bool ProxyHandler::ConfigureDialog(QObject* parent)
{
    ProxyPromptValues values{m_host, m_port, m_user, m_password};
    if (!RunPrompt(values, true, parent))
        return false;
    m_userCancelled = false;
    const bool hostChanged = values.host != m_host;
    m_host = values.host;
    m_port = values.port;
    m_user = values.user;
    m_password = values.password;
    // Only a new host is stored at once; a new port reaches the store with the next good fetch.
    if (hostChanged)
        SaveSettings();
    return true;
}

bool ProxyHandler::RunPrompt(ProxyPromptValues& values, bool hostEditable, QObject* parent)
{
    if (!m_prompt)
        return false;
    QCoreApplication* application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread())
        return m_prompt(values, hostEditable, parent);

    // The interface thread pumps its events while the fetch runs, so it picks this up.
    bool accepted = false;
    QMetaObject::invokeMethod(
        application, [&] { accepted = m_prompt(values, hostEditable, parent); }, Qt::BlockingQueuedConnection);
    return accepted;
}
