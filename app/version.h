#pragma once

#include <QString>

/** The program's version, such as "0.1.0". */
QString programVersion();

/** The lines of --version: the program, Qt and the library of TLS, which is loaded for it. */
QString versionText();
