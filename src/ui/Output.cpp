#include "ui/Output.h"

#include <QMessageBox>
#include <QObject>

#include <cstdio>

std::map<int, CAtlStringA> Output::stringTable;
bool Output::s_Initialized = false;

namespace {

QString TranslatedText(const CAtlStringA& text)
{
    return QObject::tr(text.GetString());
}

}  // namespace

void Output::Initialize()
{
    if (s_Initialized)
        return;
    s_Initialized = true;
    stringTable[2] = "Curatool";
    stringTable[0] = "Could not load the configuration.";
    stringTable[1] = "You must have write permissions for the destination directory:\n%1";
    stringTable[3] = "Please select another directory.";
    stringTable[4] = "Could not read preferences.";
    stringTable[7] = "Could not download the file:\n%1\nMake sure the computer has an active Internet connection.";
    stringTable[5] = "Could not save preferences.";
    stringTable[6] = "Could not copy the configuration files.";
    stringTable[8] = "Could not register file associations.";
    stringTable[9] = "Cannot find the source for this Gallery.";
    stringTable[10] = "There is an update for the application. Click OK to start.";
    stringTable[11] = "Could not download the update for Curatool.";
    stringTable[12] = "Uninstall complete.";
    stringTable[13] = "Another instance of this application is running. Please use it instead.";
}

const CAtlStringA& Output::Lookup(int code)
{
    return stringTable[code];
}

QString Output::GetTranslated(int code)
{
    return TranslatedText(Lookup(code));
}

QString Output::GetTranslated(int code, const CAtlStringA& value)
{
    return GetTranslated(code).arg(QString::fromUtf8(value.GetString()), 0, QLatin1Char(' '));
}

CAtlStringA Output::GetText(int code)
{
    return Lookup(code);
}

CAtlStringA Output::GetText(int code, const CAtlStringA& value)
{
    CAtlStringA text = Lookup(code);
    text.Replace("%1", value.GetString());
    return text;
}

void Output::Show(const QString& translated, const CAtlStringA& untranslated, bool gui)
{
    if (gui) {
        QMessageBox::critical(nullptr, TranslatedText(Lookup(eTitle)), translated, QMessageBox::Ok,
                              QMessageBox::NoButton);
    }
    std::fprintf(stderr, "%s\n", untranslated.GetString());
    std::fflush(stderr);
}

void Output::Error(int code, bool gui)
{
    Show(GetTranslated(code), GetText(code), gui);
}

void Output::Error(int code, const CAtlStringA& value, bool gui)
{
    Show(GetTranslated(code, value), GetText(code, value), gui);
}

namespace {

// `message` up to the end of the line that holds `value`: what follows is advice for the case of
// no answer at all.
QString UpToTheValuesLine(const QString& message, const QString& value)
{
    const qsizetype at = value.isEmpty() ? -1 : message.indexOf(value);
    const qsizetype end = at < 0 ? -1 : message.indexOf(QLatin1Char('\n'), at + value.size());
    return end < 0 ? message : message.left(end);
}

}  // namespace

void Output::ErrorWithReason(int code, const CAtlStringA& value, const CAtlStringA& reason, bool gui)
{
    if (reason.IsEmpty()) {
        Error(code, value, gui);
        return;
    }
    const QString why = QString::fromUtf8(reason.GetString());
    const QString shown = QString::fromUtf8(value.GetString());
    QString translated = GetTranslated(code, value);
    QString untranslated = QString::fromUtf8(GetText(code, value).GetString());
    if (why.startsWith(QLatin1String("HTTP status"))) {
        translated = UpToTheValuesLine(translated, shown);
        untranslated = UpToTheValuesLine(untranslated, shown);
    }
    Show(translated + QLatin1Char('\n') + why,
         CAtlStringA((untranslated + QLatin1Char('\n') + why).toUtf8().constData()), gui);
}
