#pragma once

#include <string>
#include <string_view>

namespace standard {

/**
 * An HTML document as text: paragraphs, lists with their marks, quotations behind "> ", the cells of a row
 * behind " | ", and behind each link its address in angle brackets. Nothing is fetched, and nothing of it
 * runs: scripts, styles and frames are left out, and of a picture there is only its description. It takes
 * time and memory in proportion to the document, however deep its elements lie.
 *
 * \param document UTF-8. The result is UTF-8, with CR LF between the lines.
 */
std::string textOfHtml(std::string_view document);

/** The charset that an HTML document names itself in its first bytes; empty for none. */
std::string charsetOfHtml(std::string_view document);

} // namespace standard
