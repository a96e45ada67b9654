#pragma once

#include <QEvent>
#include <QObject>

#include <functional>
#include <map>

// An event filter that hands chosen event types to functions, so that a class which is not a
// QObject can still react to another object's events. Install it with installEventFilter.
class QtEventProxy : public QObject {
    Q_OBJECT
public:
    // Gives true to stop the event from reaching its object.
    using Handler = std::function<bool(QObject* watched, QEvent* event)>;

    explicit QtEventProxy(QObject* parent = nullptr);

    // Replaces any handler for `type`; an empty handler removes it.
    void SetHandler(QEvent::Type type, Handler handler);

    // False for types without a handler, otherwise what the handler says.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::map<QEvent::Type, Handler> m_handlers;
};
