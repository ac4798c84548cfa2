#pragma once

#include "standard/entity.h"

#include <string>

namespace standard {

/**
 * The text of a text part as UTF-8, its lines with CR LF between them: decoded by its transfer encoding and
 * charset, HTML as text, format=flowed rejoined. A part that cannot be decoded is given as it stands below a
 * line that says so.
 */
std::string textOfPart(const Entity& part);

/** The same text before HTML and format=flowed are made readable. */
std::string decodedTextOfPart(const Entity& part);

} // namespace standard
