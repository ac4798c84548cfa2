#pragma once

#include <QString>
#include <QStringView>

#include <functional>
#include <memory>

namespace platform {

/**
 * A printer that text is written to, piece by piece, as one document. It keeps a current position; positions
 * and widths are in one unit, which is the printer's own. Lines that do not fit on a page go to the next one.
 * Every operation raises error 482 when the printer fails.
 */
class TextPrinter {
  public:
    TextPrinter() = default;
    virtual ~TextPrinter() = default;
    TextPrinter(const TextPrinter&) = delete;
    TextPrinter& operator=(const TextPrinter&) = delete;

    /**
     * Called now and then during long work, between two pieces of text. It may let the windows handle their
     * events, but must not use this printer.
     */
    std::function<void()> betweenPieces;

    /** Text from here on is measured and printed in this font; the size is in points. */
    virtual void setFont(const QString& family, double size) = 0;

    /** Where the next text will begin, counted from the left edge of the printable area. */
    virtual double currentX() const = 0;

    /** The width of the printable area. */
    virtual double printableWidth() const = 0;

    /** How wide the text would be, printed at the current position; of several lines, the widest counts. */
    virtual double textWidth(QStringView text) const = 0;

    /**
     * Prints the text and moves the current position behind it. A line break inside (CR LF, LF or CR) begins
     * a new line.
     */
    virtual void print(QStringView text) = 0;

    /** Moves to the beginning of the next line. */
    virtual void endLine() = 0;

    /** Completes the document; the printer starts to print. */
    virtual void endDocument() = 0;
};

/**
 * Begins a document on the system's default printer. The printing library is loaded at the first call, so
 * that start-up does not pay for it.
 * \throws RuntimeError 482 when there is no default printer or it takes no document.
 */
std::unique_ptr<TextPrinter> makeDefaultPrinter();

/** The default printer's name; empty when there is none, or no printing library. Begins no document. */
QString defaultPrinterName();

/**
 * Begins a document that is written into this file as PDF.
 * \throws RuntimeError 482 when the file cannot be written, or without the printing library.
 */
std::unique_ptr<TextPrinter> makeFilePrinter(const QString& file);

/** Replaces the default printer by a function, for tests. An empty one brings the real one back. */
void replaceDefaultPrinter(std::function<std::unique_ptr<TextPrinter>()> standIn);

} // namespace platform
