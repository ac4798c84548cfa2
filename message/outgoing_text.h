#pragma once

#include <string>
#include <string_view>

/** How a part's bytes go out (RFC 2045 section 6). */
enum class TransferForm { SevenBit, EightBit, QuotedPrintable, Base64 };

/** The word for it in Content-Transfer-Encoding. */
std::string_view nameOf(TransferForm form) noexcept;

/** What decides in which form bytes can go out. */
struct ByteTraits {
    /** Some are beyond ASCII. */
    bool eightBit = false;
    /** Lines end in CR LF, with no other CR or LF and no NUL, and none is longer than SMTP takes. */
    bool readyLines = true;
};

ByteTraits traitsOf(std::string_view bytes);

/** A text as the part of a message. */
struct OutgoingText {
    TransferForm form = TransferForm::SevenBit;
    /** "us-ascii" or "utf-8". */
    std::string_view charset;
    std::string bytes;
};

/**
 * Gives a text its form: 7bit where it is ASCII, 8bit where the server takes that, and quoted-printable where
 * it does not, or where a line is too long for SMTP. Bare CR and LF become CR LF, NUL is left out, and bytes
 * that are not UTF-8 are taken for Windows-1252.
 */
OutgoingText outgoingText(std::string_view text, bool eightBitOffered);

/** Lines that end in CR LF as quoted-printable; a soft break never parts a UTF-8 character. */
std::string quotedPrintable(std::string_view text);
