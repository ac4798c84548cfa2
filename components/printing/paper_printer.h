#pragma once

#include "platform/text_printer.h"

#include <QFontMetricsF>
#include <QPainter>

#include <memory>

class QPrinter;

namespace printing {

/**
 * Text on the pages of a printer, in the printer's own units. Lines break where the text breaks them and, so
 * that nothing is lost, at the right edge; spaces may hang over it. A page is begun only when text is to be
 * printed on it. Tabs lead to the next stop; other control characters are shown instead of obeyed.
 */
class PaperPrinter : public platform::TextPrinter {
  public:
    /** Begins a document. \throws RuntimeError 482 when the printer takes none. */
    explicit PaperPrinter(std::unique_ptr<QPrinter> printer);
    ~PaperPrinter() override;
    PaperPrinter(const PaperPrinter&) = delete;
    PaperPrinter& operator=(const PaperPrinter&) = delete;

    void setFont(const QString& family, double size) override;

    double currentX() const override { return x_; }

    double printableWidth() const override;
    double textWidth(QStringView text) const override;
    void print(QStringView text) override;
    void endLine() override;
    void endDocument() override;

  private:
    double tabStopAfter(double x) const;
    void printPiece(QString piece);
    void draw(const QString& text);
    qsizetype fittingLength(const QString& piece) const;
    void turnPages();
    void pause() const;

    std::unique_ptr<QPrinter> printer_;
    QPainter painter_;
    QFontMetricsF metrics_;
    double tabWidth_;
    double x_ = 0;
    /** The top of the current line, on this page or, before anything stands there, on a later one. */
    double y_ = 0;
};

} // namespace printing
