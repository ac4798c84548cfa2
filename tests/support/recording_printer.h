#pragma once

#include "platform/text_printer.h"

#include <string>
#include <vector>

namespace support {

/** What went to a recording printer; it outlives the printer. */
struct PrintedDocument {
    std::string font;
    double fontSize = 0;
    /** The lines that were ended; a line break inside a word stands in them as it was printed. */
    std::vector<std::string> lines;
    /** The line that was not ended. */
    std::string rest;
    int printCalls = 0;
    int documentEnds = 0;
};

/** A printer on which every character is one unit wide; it remembers what is printed. */
class RecordingPrinter : public platform::TextPrinter {
  public:
    explicit RecordingPrinter(PrintedDocument& document, double width = 20)
        : document_(document), width_(width) {}

    void setFont(const QString& family, double size) override;

    double currentX() const override { return x_; }

    double printableWidth() const override { return width_; }

    double textWidth(QStringView text) const override;
    void print(QStringView text) override;
    void endLine() override;

    void endDocument() override { ++document_.documentEnds; }

  private:
    PrintedDocument& document_;
    double width_;
    double x_ = 0;
};

} // namespace support
