#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace support {

/** A word on a page; distances from the page's left and upper edges, in points. */
struct PdfWord {
    std::string text;
    int page = 0;
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

/** The words of a document and the size of its pages. */
struct PdfDocument {
    int pages = 0;
    /** In points. */
    double pageWidth = 0;
    double pageHeight = 0;
    /** In the order in which they were printed. */
    std::vector<PdfWord> words;

    /** The words line by line, with a space between the words of a line. */
    std::vector<std::string> lines() const;
};

/** Why no document can be read on this computer, in a sentence to skip a test with; empty when one can. */
std::string whyPdfIsUnreadable();

/** Reads the document with pdftotext. \throws std::runtime_error when it is none. */
PdfDocument readPdf(const std::filesystem::path& file);

} // namespace support
