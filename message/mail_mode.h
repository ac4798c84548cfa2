#pragma once

/** The two ways of reading and writing mail; the start of the program chooses one. */
enum class MailMode {
    /** The program's own way: exact and simple. */
    House,
    /** As RFC 5322, 2045 to 2049, 2047, 2231, 3676 and 6532 have it. */
    Standard
};

/** The way in use; House unless useMailMode() has set the other. */
MailMode mailMode() noexcept;

/** Sets the way for the whole run, before the first window is made. */
void useMailMode(MailMode mode) noexcept;
