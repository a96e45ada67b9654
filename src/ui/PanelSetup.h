#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <QPixmap>
#include <QString>

class AboutWidget;
class CConfiguration;

// The steps that dress a collection's panel, shared by the About box, the reading window and the
// wait for the disc; each of them picks the steps it takes.
namespace PanelSetup {

// The organisation's logo when it loads, otherwise the built-in picture.
QPixmap Background(const CConfiguration& configuration);

// The text of a file the collection names; empty when it names none. A file that cannot be
// opened is told on standard error and gives no text.
QString ReadText(const CConfiguration& configuration, const CAtlString& reference);

// Spacing (left from the collection, top as given, middle 10) and the gallery's name.
void Arrange(AboutWidget& panel, const CConfiguration& configuration, int topSpacing);

}  // namespace PanelSetup
