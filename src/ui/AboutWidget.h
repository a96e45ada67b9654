#pragma once

#include "ui_AboutWidget.h"

#include <QPixmap>
#include <QWidget>

// One panel: a picture stretched over the whole of it, the gallery's name and a text laid over
// it. The About box, the reading window and the wait for the disc all show it.
class AboutWidget : public QWidget {
    Q_OBJECT
public:
    explicit AboutWidget(QWidget* parent = nullptr);

    // The panel is never smaller than its picture.
    void SetBackground(const QPixmap& background);
    void SetTopSpacing(int value);
    void SetLeftSpacing(int value);
    void SetMiddleSpacing(int value);
    void SetGalleryName(const QString& name);
    // The text shows only once there is one.
    void SetText(const QString& html);

    const Ui::AboutWidget& Form() const { return m_form; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Ui::AboutWidget m_form;
    QPixmap m_background;
};
