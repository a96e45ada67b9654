#pragma once

#include <QString>

// A collection's HTML marks pieces to translate as <translate>...</translate>. Each is replaced
// by its translation, innermost first, and then the markers go, also those never translated.
// Markup that does not parse is told on standard error; its markers are still taken out.
QString TranslateHtml(const QString& html);
