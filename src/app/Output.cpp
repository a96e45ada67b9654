#include "Output.h"

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
