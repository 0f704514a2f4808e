#include "views/Announcements.h"

#include <utility>

namespace {

std::function<void(QAccessibleEvent&)>& replacement()
{
    static std::function<void(QAccessibleEvent&)> listener;
    return listener;
}

} // namespace

bool Announcements::areHeard()
{
    return QAccessible::isActive() || replacement();
}

void Announcements::tell(QAccessibleEvent& event)
{
    if (replacement())
        replacement()(event);
    else
        QAccessible::updateAccessibility(&event);
}

void Announcements::tellTo(std::function<void(QAccessibleEvent&)> listener)
{
    replacement() = std::move(listener);
}
