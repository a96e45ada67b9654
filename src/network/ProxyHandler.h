#pragma once

#include "network/IProxyObserver.h"

#include "libZoltaAtl/CAtlString.h"

#include <functional>

class QObject;

// The values a proxy dialog shows and, when accepted, hands back.
struct ProxyPromptValues {
    CAtlString host;
    int port = 0;
    CAtlString user;
    CAtlString password;
};

// Shows the proxy dialog: filled from `values`, with host and port editable or not, under
// `parent` (a QWidget, or null for a top-level dialog). True when the user accepted; `values`
// then holds what was typed. The network layer knows no widgets, so the dialog comes from outside.
using ProxyPrompt = std::function<bool(ProxyPromptValues& values, bool hostEditable, QObject* parent)>;

// Host, port and credentials of the proxy, and the state of asking the user for them.
class ProxyHandlerBase {
public:
    virtual ~ProxyHandlerBase() = default;

    virtual void LoadSettings() = 0;
    [[nodiscard]] virtual bool SaveSettings() = 0;

protected:
    CAtlString m_host;
    int m_port = 0;
    CAtlString m_user;
    CAtlString m_password;
    bool m_allowPrompt = false;
    bool m_credentialsTried = false;
    bool m_userCancelled = false;
};

// The one proxy object of a run. Settings live in the user's settings store under a fixed name;
// user and password are never stored.
class ProxyHandler : public ProxyHandlerBase, public IProxyObserver {
public:
    static const wchar_t* const kStoreName;  // "com.zoltaworks.Registry"
    static const wchar_t* const kSection;    // the ProxyInformation section
    static const wchar_t* const kHostKey;    // "HttpProxyHost"
    static const wchar_t* const kPortKey;    // "HttpProxyPort"
    static constexpr int kDefaultPort = 8080;

    ProxyHandler() = default;

    // Reads host and port; an absent port gives 8080, an absent host the empty text.
    void LoadSettings() override;
    // Writes host and port; true when the port was written.
    [[nodiscard]] bool SaveSettings() override;

    // Takes the text as the host as it stands, "name:port" included; the port is left alone.
    void SetHost(const CAtlString& host);
    // Credentials given on the command line; the first 407 tries them without a dialog.
    void SetCredentials(const CAtlString& user, const CAtlString& password);
    void SetAllowPrompt(bool allow);
    // The dialog used by Authenticate and ConfigureDialog; without one, a dialog counts as refused.
    void SetPrompt(ProxyPrompt prompt);

    // Lets the user edit host, port, user and password. False when the dialog was not accepted.
    bool ConfigureDialog(QObject* parent);

    // IProxyObserver
    void GetProxy(CAtlString& host, int& port, CAtlString& user, CAtlString& password) override;
    bool Authenticate(const CAtlString& host, int port, CAtlString& user, CAtlString& password) override;
    void Cancelled() override;
    void ReadProgress(int done, int total) override;

    const CAtlString& GetHost() const { return m_host; }
    int GetPort() const { return m_port; }
    const CAtlString& GetUser() const { return m_user; }
    const CAtlString& GetPassword() const { return m_password; }
    bool IsPromptAllowed() const { return m_allowPrompt; }
    bool IsUserCancelled() const { return m_userCancelled; }

private:
    // Widgets live on the interface thread; a fetch on a worker waits there for the answer.
    bool RunPrompt(ProxyPromptValues& values, bool hostEditable, QObject* parent);

    ProxyPrompt m_prompt;
};
