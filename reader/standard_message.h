#pragma once

#include "email/messages.h"

#include <QString>

class frmFrom;

/**
 * Reads a message that was fetched whole as the standards have it, and shows it in the window. The summary
 * gets the decoded fields, and its header and body go over to the window.
 * \throws RuntimeError 7 when there is no memory, 53 when the reader's library cannot be loaded.
 */
void showStandardMessage(email::MessageSummary& message, frmFrom& window);

/** Empties the window's field for attachments, whichever it has. */
void emptyAttachments(frmFrom& window);

/**
 * Writes the attachment that is chosen in the window into the file, decoded.
 * \throws RuntimeError 20503 for a file of the program's own, and what writing a private file raises.
 */
void saveChosenAttachment(const frmFrom& window, const QString& drivePath);

/** The name of the attachment that is chosen in the window. */
QString chosenAttachmentName(const frmFrom& window);
