#pragma once

#include <QString>

class CApplicationFactory;
class CConfiguration;

// The steps of start-up and shutdown that lean on other parts of the system: the language layer
// and the gallery library, in the places main and CApplicationFactory call them.
namespace StartupSteps {

// The program's own catalogue "CuratoolId" from <program dir>/Languages/<language>/, language
// chosen with the settings; installed when found, silence when not.
void LoadProgramCatalogue();

// <configuration's directory>/Languages/<system language>, where the catalogue of a loaded
// collection lives; empty when the configuration has no directory.
QString ConfigurationCatalogueDirectory(const CConfiguration& configuration);

// The look of the window-based runs: the style, the application style sheet of the factory and
// the program's window icon.
void ApplyWindowLook(CApplicationFactory& factory);

// Starts the gallery library (its background thread included) and waits until its start-up
// work is done; a non-zero status is passed on to the event loop's exit.
int InitializeGalleryLibrary();
// Shuts the gallery library down after the event loop.
void ShutdownGalleryLibrary();

}  // namespace StartupSteps
