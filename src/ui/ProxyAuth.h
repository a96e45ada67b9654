#pragma once

#include "network/ProxyHandler.h"

#include <QDialog>
#include <QString>

#include <memory>

namespace Ui {
class ProxyAuth;
}

// Asks for the user name and password of a proxy. Host and port are shown read-only, looking like
// labels, unless the caller lets the user edit them (the proxy options).
class ProxyAuth : public QDialog {
    Q_OBJECT
public:
    explicit ProxyAuth(QWidget* parent = nullptr);
    ~ProxyAuth() override;

    QString GetHost() const;
    void SetHost(const QString& host);
    // Base 10; text that is not a number gives 0.
    int GetPort() const;
    void SetPort(int port);
    QString GetUser() const;
    void SetUser(const QString& user);
    QString GetPassword() const;
    void SetPassword(const QString& password);

    void SetHostEditable(bool editable);

    // The prompt for ProxyHandler::SetPrompt: runs the dialog modally under `parent` (a QWidget or
    // null) with `values`, and on acceptance hands back what was typed.
    static bool Prompt(ProxyPromptValues& values, bool hostEditable, QObject* parent);

private:
    std::unique_ptr<Ui::ProxyAuth> m_ui;
};
