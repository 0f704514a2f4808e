#pragma once

/// The entry of the program: runs the window, or the self-test, and returns the exit code.
int qMain(int argc, char** argv);
