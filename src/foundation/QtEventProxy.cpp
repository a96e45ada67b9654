#include "foundation/QtEventProxy.h"

QtEventProxy::QtEventProxy(QObject* parent)
    : QObject(parent)
{}

void QtEventProxy::SetHandler(QEvent::Type type, Handler handler)
{
    if (handler)
        m_handlers[type] = std::move(handler);
    else
        m_handlers.erase(type);
}

bool QtEventProxy::eventFilter(QObject* watched, QEvent* event)
{
    const auto found = m_handlers.find(event->type());
    if (found == m_handlers.end())
        return false;
    return found->second(watched, event);
}
