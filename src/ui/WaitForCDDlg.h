#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "ui_WaitForCDDlg.h"

#include <QDialog>

#include <memory>

class CConfiguration;
class QTimer;

// Asks for the installation disc and looks for the gallery's data every two seconds until it is
// there, or until the user picks a collection file instead.
class WaitForCDDlg : public QDialog, public Ui::WaitForCD {
    Q_OBJECT
public:
    WaitForCDDlg(std::shared_ptr<CConfiguration> configuration, const CAtlString& source, QWidget* parent = nullptr);

    // Shows the window at its natural size, fixed, and waits while it polls; the exec result.
    int Exec();

    // Where the gallery's data was found; empty when the window ended otherwise.
    const CZoltaDirectoryPath& GetFound() const { return m_found; }

public slots:
    void OnBrowse();
    void OnTimer();

private:
    std::shared_ptr<CConfiguration> m_configuration;
    QTimer* m_timer;
    CZoltaDirectoryPath m_sourceDir;
    CZoltaDirectoryPath m_found;
};
