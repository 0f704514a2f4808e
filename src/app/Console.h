#pragma once

/// Gives the process a place to print to where the system starts windowed programs without one:
/// on Windows, the console of the program that started it. Does nothing elsewhere.
void attachConsole();
