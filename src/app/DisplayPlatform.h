#pragma once

// The console modes must run on a machine without any display. Before QApplication exists:
// when no platform was asked for and no display can be reached, Qt is sent to its offscreen
// platform; and Qt's own diagnostics are kept off both streams, which belong to the program.
namespace DisplayPlatform {

// True when the offscreen platform was chosen here because there is no display.
bool Prepare();

// Whether Prepare chose offscreen; a window-based run cannot go on then.
bool IsHeadless();

// The line printed when a window-based run finds no display.
const char* NoDisplayMessage();

}  // namespace DisplayPlatform
