#include "app/DisplayPlatform.h"

#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace {

bool g_headless = false;

bool IsSet(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value;
}

void QuietMessageHandler(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    // Fatal messages end the process; the reason is all the user will get, so it stays visible.
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
        std::fflush(stderr);
    }
}

}  // namespace

namespace DisplayPlatform {

bool Prepare()
{
    qInstallMessageHandler(QuietMessageHandler);
    if (!IsSet("QT_QPA_PLATFORM") && !IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY")) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        g_headless = true;
    }
    return g_headless;
}

bool IsHeadless()
{
    return g_headless;
}

const char* NoDisplayMessage()
{
    return "Curatool cannot open its windows: no display is available. "
           "Set DISPLAY, or use one of the command-line modes (see --help).";
}

}  // namespace DisplayPlatform
