#include "CPasswordDialog.h"

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
    : QDialog(parent), m_user(user), m_password(password)
{
    setupUi(this);
    if (!title.isEmpty())
        setWindowTitle(title);
    ReplaceIfGiven(labelPrompt, prompt);
    ReplaceIfGiven(labelUser, userLabel);
    ReplaceIfGiven(labelPassword, passwordLabel);

    if (!user.isEmpty())
        editUser->setText(user);
    if (!password.isEmpty())
        editPassword->setText(password);
    editUser->setReadOnly(userReadOnly);
    if (userReadOnly)
        editPassword->setFocus();
}

CPasswordDialog::~CPasswordDialog()
{
    // Don't leave the typed password lying in the widget's memory longer than needed.
    editPassword->clear();
}

void CPasswordDialog::accept()
{
    m_user = editUser->text();
    m_password = editPassword->text();
    editPassword->clear();
    QDialog::accept();
}
