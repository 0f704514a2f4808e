#pragma once

/// The threads on which libraries carry sound to its device. They have a few milliseconds for each
/// of their turns, and beside other busy programs they get one too late unless they go first.
namespace SoundThreads {

/// Gives those that run real-time priority, as far as the system, or the service of the desktop
/// that grants it, lets this user. All of them or none: one that waits for the lock of another of
/// lower priority is later than with none. Answers how many have it. One that computes for a tenth
/// of a second without a rest loses it for good, and with it all others, so that the desktop never
/// stands still. Waits for the service for a second at most: not for the GUI thread. 0 where the
/// platform's sound has no need.
int hurry();

/// Does so in a second, on another thread: by then those of a device that has just been opened run,
/// and bear the names that tell them. For the GUI thread.
void hurrySoon();

} // namespace SoundThreads
