#pragma once

#include "message/outgoing_text.h"

#include <QString>

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

/** Content-Type and Content-Transfer-Encoding of a text, each line with CR LF. */
std::string textPartHeader(const OutgoingText& text);

/**
 * The header of an attached file's part: its type with a plain ASCII name, its encoding, and its name in the
 * form of RFC 2231. Control characters in the name become underscores.
 */
std::string filePartHeader(std::string_view type, TransferForm form, const QString& name,
                           std::string_view charset = {});

/** The name in ASCII: letters lose their marks, and what then is not ASCII becomes an underscore. */
std::string plainFileName(const QString& name);

/** A boundary that nobody can guess, and that stands in none of the texts (RFC 2046 section 5.1.1). */
std::string newBoundary(std::initializer_list<std::string_view> texts);

/** The same with another source of boundaries. */
std::string newBoundary(std::initializer_list<std::string_view> texts,
                        const std::function<std::string()>& draw);

/** Content-Type of the whole message; and its Content-Transfer-Encoding where a part has bytes beyond ASCII.
 */
std::string multipartHeader(std::string_view boundary, bool eightBit);

/** What a file is, as its part tells it. */
struct FileType {
    /** Such as "image/png"; "application/octet-stream" where nothing is known. */
    std::string type;
    /** Of a text that is ASCII or UTF-8; empty for any other file. */
    std::string charset;
};

/**
 * The type of a file by its name and its first bytes.
 * \throws RuntimeError 53, 75 or 57 when a text cannot be read.
 */
FileType fileTypeOf(const QString& nativePath);
