#pragma once

#include <QStringView>

namespace printing {

/** One step of printing a text. */
struct TextPart {
    enum class Kind { Text, Tab, LineBreak };

    Kind kind = Kind::Text;
    /** The characters of the part. A part of kind Text is short and splits no character. */
    QStringView text;
};

/** Takes the first part off a text that is not empty and returns it. CR LF is one line break. */
TextPart takePart(QStringView& text);

} // namespace printing
