#pragma once

#include <QString>

/**
 * Refuses an attachment's name, which a stranger has chosen, when it is no plain file name: when it could
 * lead out of the folder for attachments (a separator, a drive letter, ".."), hide the file there or replace
 * a file of the user's own settings (a dot at the start), or look like another name (control characters,
 * direction overrides). \throws RuntimeError 20503
 */
void requireSafeName(const QString& name);
