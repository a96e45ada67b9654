// The texts of the table of coded messages as the catalogue tools must see them. Output keeps its
// own copies and translates them at run time, which a source scanner cannot follow; a change of a
// text there belongs here too (the catalogue test finds a text that has none).
#include <QtGlobal>

namespace {

[[maybe_unused]] const char* const kOutputTexts[] = {
    QT_TRANSLATE_NOOP("QObject", "Curatool"),
    QT_TRANSLATE_NOOP("QObject", "Could not load the configuration."),
    QT_TRANSLATE_NOOP("QObject", "You must have write permissions for the destination directory:\n%1"),
    QT_TRANSLATE_NOOP("QObject", "Please select another directory."),
    QT_TRANSLATE_NOOP("QObject", "Could not read preferences."),
    QT_TRANSLATE_NOOP("QObject",
                      "Could not download the file:\n%1\nMake sure the computer has an active Internet connection."),
    QT_TRANSLATE_NOOP("QObject", "Could not save preferences."),
    QT_TRANSLATE_NOOP("QObject", "Could not copy the configuration files."),
    QT_TRANSLATE_NOOP("QObject", "Could not register file associations."),
    QT_TRANSLATE_NOOP("QObject", "Cannot find the source for this Gallery."),
    QT_TRANSLATE_NOOP("QObject", "There is an update for the application. Click OK to start."),
    QT_TRANSLATE_NOOP("QObject", "Could not download the update for Curatool."),
    QT_TRANSLATE_NOOP("QObject", "Uninstall complete."),
    QT_TRANSLATE_NOOP("QObject", "Another instance of this application is running. Please use it instead."),
};

}  // namespace
