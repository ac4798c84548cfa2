#pragma once

#include "app/command_line.h"

/**
 * Runs the doctor as the options say, in the current folder, and writes what it has found to the standard
 * output. Needs no display, takes no lock and writes no file. Returns the status to end the process with: 0
 * when nothing stops members, 1 when something does, 2 when no password has come. Of the arguments only the
 * first one, the program's name, counts.
 */
int examine(const CommandLine& line, char** arguments);
