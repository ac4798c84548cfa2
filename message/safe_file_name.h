#pragma once

#include <QString>

/**
 * The name under which an attachment is saved: the one that its sender has chosen, changed so that every file
 * system accepts it, that it stays in its folder, and that it is displayed as it is. A name that is safe
 * already is not changed.
 *
 * An underscore replaces each separator, control character, direction override and `: * ? " < > |`, and each
 * dot or space at the start or at the end: at the start it would hide the file or lead out of the folder, and
 * memory sticks (FAT) take none at the end. An underscore is put before the names of devices, such as CON and
 * lpt1.txt. A name of nothing but white space becomes "attachment". A name of more than 255 bytes is
 * shortened before its extension.
 */
QString safeFileName(const QString& name);
