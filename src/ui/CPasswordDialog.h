#pragma once

#include <QDialog>
#include <QString>

#include <memory>

namespace Ui {
class PasswordDialog;
}

// Asks for a user name and a password. The two strings passed in give the starting values and
// receive what the user typed when the dialog is accepted.
class CPasswordDialog : public QDialog {
    Q_OBJECT
public:
    // Each optional text replaces the standard one only when it is not empty.
    CPasswordDialog(QWidget* parent, QString& user, QString& password, bool userReadOnly,
                    const QString& title = QString(), const QString& prompt = QString(),
                    const QString& userLabel = QString(), const QString& passwordLabel = QString());
    ~CPasswordDialog() override;

public slots:
    void accept() override;

private:
    std::unique_ptr<Ui::PasswordDialog> m_ui;
    QString& m_user;
    QString& m_password;
};
