#pragma once

#include <QAccessible>

#include <functional>

/// What is told to those who cannot see the screen, without being asked.
namespace Announcements {

/// Whether there is anybody. Whoever has to find out what there is to tell looks here first.
bool areHeard();

void tell(QAccessibleEvent& event);

/// Puts something in the place of the platform, which listens only where a desktop has asked it
/// to; an empty function puts the platform back.
void tellTo(std::function<void(QAccessibleEvent&)> listener);

} // namespace Announcements
