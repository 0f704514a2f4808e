#pragma once

#include "app/StartOptions.h"

/// What the program tells of itself on the command line. None of it needs an application, so it
/// works wherever the program can be started at all.
namespace AboutVelta {

/// The version that was built, as "1.2.3".
QString version();

/// A line with the name and the version.
QString versionText();

/// How to start the program, and what it reads.
QString helpText();

/// Prints what is asked for; false if that is nothing.
bool print(StartOptions::About about);

} // namespace AboutVelta
