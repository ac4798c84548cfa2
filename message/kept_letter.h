#pragma once

#include "message/letter.h"

#include <QString>

#include <optional>
#include <string>
#include <string_view>

/** What the user has put into a compose window, as it is kept until it is sent or given up. */
struct KeptLetter {
    QString to;
    QString copies;
    QString subject;
    /** The path of the file to attach, as typed; the file itself is not kept. */
    QString attachment;
    /** The text, kept byte for byte. */
    std::string text;
    /** What it takes along from another message, kept whole. */
    LetterOrigin origin = {};

    bool operator==(const KeptLetter&) const = default;
};

/** True when the user has written nothing. The copy to the sender that Cc may begin with does not count. */
bool isEmpty(const KeptLetter& letter, const QString& senderAddress);

/** The content of the file that the letter is kept in. */
std::string keptLetterFile(const KeptLetter& letter);

/** The letter that the file holds; nothing when it holds none, or not the whole of one. */
std::optional<KeptLetter> keptLetterIn(std::string_view file);

/**
 * The name of the file that keeps this sender's letter, for a program that works in this folder. The name
 * reveals neither, because others may see the names in a folder that they cannot read.
 */
QString keptLetterName(const QString& sender, const QString& folder);
