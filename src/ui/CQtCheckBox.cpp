#include "ui/CQtCheckBox.h"

#include "ui/CQtTreeCheckBox.h"

#include <QCheckBox>

CQtCheckBox::CQtCheckBox(int id, IBoxObserver* observer, QCheckBox* checkBox)
    : CHeckBox(id, observer)
{
    SetCheckBox(checkBox);
}

CQtCheckBox::~CQtCheckBox() = default;

void CQtCheckBox::SetCheckBox(QCheckBox* checkBox)
{
    if (m_checkBox)
        disconnect(m_checkBox, nullptr, this, nullptr);
    m_checkBox = checkBox;
    if (m_checkBox) {
        connect(m_checkBox, &QCheckBox::clicked, this, &CQtCheckBox::OnClicked);
        ShowOnWidget();
    }
}

bool CQtCheckBox::IsTriState() const
{
    return m_checkBox && m_checkBox->isTristate();
}

void CQtCheckBox::SetText(const CAtlString& text)
{
    if (m_checkBox)
        m_checkBox->setText(text.ToQString());
}

bool CQtCheckBox::IsEnabled() const
{
    return !m_checkBox || m_checkBox->isEnabled();
}

void CQtCheckBox::SetEnabled(bool enabled)
{
    if (m_checkBox)
        m_checkBox->setEnabled(enabled);
}

bool CQtCheckBox::IsVisible() const
{
    return !m_checkBox || !m_checkBox->isHidden();
}

void CQtCheckBox::SetVisible(bool visible)
{
    if (m_checkBox)
        m_checkBox->setHidden(!visible);
}

void CQtCheckBox::ApplyState(int state)
{
    CHeckBox::ApplyState(state);
    ShowOnWidget();
}

void CQtCheckBox::ShowState(int state)
{
    CHeckBox::ShowState(state);
    ShowOnWidget();
}

void CQtCheckBox::ShowOnWidget()
{
    if (m_checkBox)
        m_checkBox->setCheckState(QtCheckState(GetState()));
}

void CQtCheckBox::OnClicked(bool)
{
    // The widget has already moved on by its own cycle; the box decides and shows its own.
    if (IsEnabled())
        Toggle();
    else
        ShowOnWidget();
}
