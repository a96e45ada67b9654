#pragma once

#include "libZoltaAtl/CAtlStringA.h"

#include <QString>

#include <map>

// The table of coded messages: the one road of user-facing coded errors. The same message goes
// to a dialog, translated, and to standard error in English.
class Output {
public:
    // The codes in use; the numbers are fixed.
    enum eCode {
        eCouldNotLoadConfiguration = 0,
        eNoWritePermission = 1,  // %1: the destination
        eTitle = 2,              // title of every message box
        eSelectAnotherDirectory = 3,
        eCouldNotReadPreferences = 4,
        eCouldNotSavePreferences = 5,
        eCouldNotCopyConfiguration = 6,
        eCouldNotDownload = 7,  // %1: the URL
        eCouldNotRegisterAssociations = 8,
        eSourceNotFound = 9,
        eUpdateAvailable = 10,
        eCouldNotDownloadUpdate = 11,
        eUninstallComplete = 12,
        eAnotherInstance = 13,
    };

    // Fills the table once; the texts are also the keys of the translation catalogue.
    static void Initialize();

    static QString GetTranslated(int code);
    static QString GetTranslated(int code, const CAtlStringA& value);
    static CAtlStringA GetText(int code);
    static CAtlStringA GetText(int code, const CAtlStringA& value);

    // With gui a critical message box (blocking) first; standard error in every case.
    static void Show(const QString& translated, const CAtlStringA& untranslated, bool gui);
    static void Error(int code, bool gui);
    static void Error(int code, const CAtlStringA& value, bool gui);
    // A failed download of `url` and why. A server that answered with a status was reached, so the
    // advice about the Internet connection (code 7) is left out then; otherwise code 7 is shown,
    // followed by the reason on a line of its own.
    static void ErrorWithReason(int code, const CAtlStringA& value, const CAtlStringA& reason, bool gui);

private:
    // An unknown code is entered with an empty text, so it shows an empty message.
    static const CAtlStringA& Lookup(int code);

    static std::map<int, CAtlStringA> stringTable;
    static bool s_Initialized;
};
