#include "ui/CPasswordDialog.h"

#include "ui_CPasswordDialog.h"

namespace {

void ReplaceIfGiven(QLabel* label, const QString& text)
{
    if (!text.isEmpty())
        label->setText(text);
}

}  // namespace

CPasswordDialog::CPasswordDialog(QWidget* parent, QString& user, QString& password, bool userReadOnly,
                                 const QString& title, const QString& prompt, const QString& userLabel,
                                 const QString& passwordLabel)
    : QDialog(parent),
      m_ui(std::make_unique<Ui::PasswordDialog>()),
      m_user(user),
      m_password(password)
{
    m_ui->setupUi(this);
    if (!title.isEmpty())
        setWindowTitle(title);
    ReplaceIfGiven(m_ui->labelPrompt, prompt);
    ReplaceIfGiven(m_ui->labelUser, userLabel);
    ReplaceIfGiven(m_ui->labelPassword, passwordLabel);

    if (!user.isEmpty())
        m_ui->editUser->setText(user);
    if (!password.isEmpty())
        m_ui->editPassword->setText(password);
    m_ui->editUser->setReadOnly(userReadOnly);
    if (userReadOnly)
        m_ui->editPassword->setFocus();
}

CPasswordDialog::~CPasswordDialog()
{
    // Don't leave the typed password lying in the widget longer than needed.
    m_ui->editPassword->clear();
}

void CPasswordDialog::accept()
{
    m_user = m_ui->editUser->text();
    m_password = m_ui->editPassword->text();
    m_ui->editPassword->clear();
    QDialog::accept();
}
