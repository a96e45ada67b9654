#include "ui/PanelSetup.h"

#include "ui/AboutWidget.h"
#include "configuration/CConfiguration.h"
#include "ui/UiResources.h"

#include <QFile>
#include <QTextStream>

#include <cstdio>

namespace PanelSetup {

QPixmap Background(const CConfiguration& configuration)
{
    QPixmap background;
    const CAtlString& logo = configuration.GetOrganization()->GetLogo();
    if (!logo.IsEmpty())
        background.load(configuration.ResolvePath(logo).ToQString());
    if (background.isNull()) {
        InitUiResources();
        background.load(QStringLiteral(":/images/LeftImageDummy.png"));
    }
    return background;
}

QString ReadText(const CConfiguration& configuration, const CAtlString& reference)
{
    const QString path = configuration.ResolvePath(reference).ToQString();
    if (path.isEmpty())
        return QString();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "Failed to load: %s\n", path.toLocal8Bit().constData());
        return QString();
    }
    QTextStream stream(&file);
    return stream.readAll();
}

void Arrange(AboutWidget& panel, const CConfiguration& configuration, int topSpacing)
{
    panel.SetLeftSpacing(configuration.GetApplication()->GetTextOffsetX());
    panel.SetTopSpacing(topSpacing);
    panel.SetMiddleSpacing(10);
    panel.SetGalleryName(configuration.GetGallery()->GetName().ToQString());
}

}  // namespace PanelSetup
