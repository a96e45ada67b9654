#include "ui/ProxyAuth.h"

#include "ui_ProxyAuth.h"

#include <QPalette>

ProxyAuth::ProxyAuth(QWidget* parent)
    : QDialog(parent),
      m_ui(std::make_unique<Ui::ProxyAuth>())
{
    m_ui->setupUi(this);
    setWindowTitle(tr("Proxy Authentication Required"));
    SetHostEditable(false);
    m_ui->proxyUserNameEdit->setFocus();
}

ProxyAuth::~ProxyAuth()
{
    // The typed password stays in the widget no longer than the dialog.
    m_ui->proxyPasswordEdit->clear();
}

void ProxyAuth::SetHostEditable(bool editable)
{
    for (QLineEdit* edit : {m_ui->proxyHostEdit, m_ui->proxyPortEdit}) {
        edit->setReadOnly(!editable);
        // Read-only fields take the window's colour so that they read as labels.
        QPalette palette = edit->palette();
        const QPalette standard = QLineEdit().palette();
        for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            palette.setColor(group, QPalette::Base,
                             editable ? standard.color(group, QPalette::Base) : palette.color(group, QPalette::Window));
        }
        edit->setPalette(palette);
    }
}

QString ProxyAuth::GetHost() const
{
    return m_ui->proxyHostEdit->text();
}

void ProxyAuth::SetHost(const QString& host)
{
    m_ui->proxyHostEdit->setText(host);
}

int ProxyAuth::GetPort() const
{
    return m_ui->proxyPortEdit->text().toInt(nullptr, 10);
}

void ProxyAuth::SetPort(int port)
{
    m_ui->proxyPortEdit->setText(QString::number(port, 10));
}

QString ProxyAuth::GetUser() const
{
    return m_ui->proxyUserNameEdit->text();
}

void ProxyAuth::SetUser(const QString& user)
{
    m_ui->proxyUserNameEdit->setText(user);
}

QString ProxyAuth::GetPassword() const
{
    return m_ui->proxyPasswordEdit->text();
}

void ProxyAuth::SetPassword(const QString& password)
{
    m_ui->proxyPasswordEdit->setText(password);
}

bool ProxyAuth::Prompt(ProxyPromptValues& values, bool hostEditable, QObject* parent)
{
    ProxyAuth dialog(qobject_cast<QWidget*>(parent));
    dialog.SetHost(values.host.ToQString());
    dialog.SetPort(values.port);
    dialog.SetUser(values.user.ToQString());
    dialog.SetPassword(values.password.ToQString());
    dialog.SetHostEditable(hostEditable);  // the proxy options: everything may change
    if (dialog.exec() != QDialog::Accepted)
        return false;
    values.host = CAtlString(dialog.GetHost());
    values.port = dialog.GetPort();
    values.user = CAtlString(dialog.GetUser());
    values.password = CAtlString(dialog.GetPassword());
    return true;
}
