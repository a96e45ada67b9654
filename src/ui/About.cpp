#include "ui/About.h"

#include "configuration/CConfiguration.h"
#include "ui/PanelSetup.h"
#include "ui/TranslatedHtml.h"
#include "ui/UiResources.h"
#include "libZoltaAtl/ZoltaAssert.h"

About::About(std::shared_ptr<CConfiguration> configuration, QWidget* parent)
    : QDialog(parent),
      m_configuration(std::move(configuration))
{
    InitUiResources();
    setupUi(this);
    ZOLTA_ASSERT_TEXT(m_configuration, "px != 0");
    const CConfiguration& collection = *m_configuration;
    aboutWidget->SetBackground(PanelSetup::Background(collection));
    if (!collection.GetApplication()->GetShowText())
        return;
    const QString text = PanelSetup::ReadText(collection, collection.GetApplication()->GetAbout());
    PanelSetup::Arrange(*aboutWidget, collection, 10);
    if (!text.isEmpty())
        aboutWidget->SetText(TranslateHtml(text));
    // Also without a text: the box then shows the panel and the gallery's name.
    m_hasAbout = true;
}

void About::OnOk()
{
    close();
}

void About::OnCancel()
{
    close();
}
