#pragma once

#include "ui_About.h"

#include <QDialog>

#include <memory>

class CConfiguration;

// The collection's About box: its panel with the about text, under a tab of its own.
class About : public QDialog, public Ui::AboutDialog {
    Q_OBJECT
public:
    About(std::shared_ptr<CConfiguration> configuration, QWidget* parent = nullptr);

    // Whether the collection shows texts at all; the main window hides its About button otherwise.
    bool HasContent() const { return m_hasAbout; }

public slots:
    void OnOk();
    void OnCancel();

private:
    bool m_hasAbout = false;
    std::shared_ptr<CConfiguration> m_configuration;
};
