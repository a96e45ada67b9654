#include "ui/AboutWidget.h"

#include <QPainter>

AboutWidget::AboutWidget(QWidget* parent)
    : QWidget(parent)
{
    m_form.setupUi(this);
    // The text lies over the picture: its field lets the picture through.
    QPalette palette = m_form.editAbout->palette();
    palette.setColor(QPalette::Base, Qt::transparent);
    m_form.editAbout->setPalette(palette);
    m_form.editAbout->viewport()->setAutoFillBackground(false);
}

void AboutWidget::SetBackground(const QPixmap& background)
{
    m_background = background;
    setMinimumSize(background.size());
    update();
}

void AboutWidget::SetTopSpacing(int value)
{
    m_form.topSpacer->changeSize(0, value, QSizePolicy::Minimum, QSizePolicy::Minimum);
    m_form.gridLayout->invalidate();
}

void AboutWidget::SetLeftSpacing(int value)
{
    m_form.leftSpacer->changeSize(value, 0, QSizePolicy::Minimum, QSizePolicy::Minimum);
    m_form.gridLayout->invalidate();
}

void AboutWidget::SetMiddleSpacing(int value)
{
    m_form.middleSpacer->changeSize(0, value, QSizePolicy::Minimum, QSizePolicy::Minimum);
    m_form.gridLayout->invalidate();
}

void AboutWidget::SetGalleryName(const QString& name)
{
    m_form.labelGalleryName->setText(name);
}

void AboutWidget::SetText(const QString& html)
{
    m_form.editAbout->setText(html);
    m_form.editAbout->show();
}

void AboutWidget::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        painter.drawPixmap(rect(), m_background);
    }
    QWidget::paintEvent(event);
}
