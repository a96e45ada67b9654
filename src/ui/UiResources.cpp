#include "ui/UiResources.h"

#include <QtGlobal>

#include <mutex>

void InitUiResources()
{
    static std::once_flag once;
    std::call_once(once, [] { Q_INIT_RESOURCE(curatool); });
}
