#include "foundation/Qtfier.h"

#include <utility>

Qtfier::Qtfier(std::function<void()> function, QObject* parent)
    : QObject(parent),
      m_function(std::move(function))
{}

void Qtfier::Slot()
{
    if (m_function)
        m_function();
}
