#pragma once

#include <QString>

/**
 * The name under which an attachment is saved: its own, which a stranger has chosen, made into one that every
 * disk takes, that stays in its folder, and that shows as what it is. A name that is so already is not
 * changed.
 *
 * An underscore stands for each separator, control character, direction override and `: * ? " < > |`, and for
 * each dot or space at the start or at the end: at the start it would hide the file or lead out of the
 * folder, and memory sticks (FAT) take none at the end. One comes before the names of devices, such as CON
 * and lpt1.txt. Nothing but white space is "attachment". A name of more than 255 bytes is shortened before
 * its extension.
 */
QString safeFileName(const QString& name);
