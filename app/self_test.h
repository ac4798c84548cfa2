#pragma once

#include <QString>

#include <functional>

/** What the test of the program by itself needs of the program; it finds the windows by their names. */
struct SelfTestOrder {
    /** Runs the program as every start does; calls the function when there is no window yet. */
    std::function<int(const std::function<void()>& beforeWindows)> showWindows;
    /** From here on the program prints into this file, as PDF. */
    std::function<void(const QString& file)> printInto;
    /** The default printer's name; empty for none. */
    std::function<QString()> printerName;
    /** Plays a wave file; returns why nothing is to be heard, empty when something is. */
    std::function<QString(const QString& file)> playSound;
};

/**
 * Uses the program's windows as a member would, at servers that this process runs itself, in a folder that is
 * gone afterwards, and tells each step on the standard output. Needs no display and no network. Returns the
 * status to end the process with: 0 when no step has failed, 1 when one has. Call it before there is an
 * application object or a second thread.
 */
int testItself(const std::function<int(const std::function<void()>& beforeWindows)>& showWindows);
