#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>

/** What a person has put into a compose window, as it is kept until it is sent or given up. */
struct KeptLetter {
    QString to;
    QString copies;
    QString subject;
    /** The path of the file to attach, as typed; the file itself is not kept. */
    QString attachment;
    /** Byte for byte. */
    std::string text;

    bool operator==(const KeptLetter&) const = default;
};

/** True when nobody has written anything; the copy to the sender that may stand in Cc by itself does not
 * count. */
bool isEmpty(const KeptLetter& letter, const QString& senderAddress);

/** The content of the file that the letter is kept in. */
std::string keptLetterFile(const KeptLetter& letter);

/** The letter that the file holds; nothing when it holds none, or not the whole of one. */
std::optional<KeptLetter> keptLetterIn(std::string_view file);

/**
 * The name of the file for what this sender writes in a program that works in this folder. It tells neither:
 * others may see the names in a folder that they cannot read.
 */
QString keptLetterName(const QString& sender, const QString& folder);
