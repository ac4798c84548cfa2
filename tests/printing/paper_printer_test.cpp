#include "components/printing/paper_printer.h"
#include "message/word_wrap.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/pdf_words.h"
#include "tests/support/temporary_folder.h"

#include <QPrinter>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

namespace {

using platform::errorNumberOf;
using printing::PaperPrinter;
using support::PdfDocument;
using support::PdfWord;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;
using testing::StartsWith;

constexpr double kMargin = 36; // points, on each side
constexpr double kPointsPerUnit = 72.0 / 1200;

/** Prints into a file, on A4 paper with margins of half an inch. */
class Paper : public testing::Test {
  protected:
    Paper() { support::application(); }

    void SetUp() override {
        if (const std::string reason = support::whyPdfIsUnreadable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
    }

    std::unique_ptr<QPrinter> filePrinter(const QString& file) const {
        auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        printer->setOutputFormat(QPrinter::PdfFormat);
        printer->setOutputFileName(file);
        printer->setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                           QMarginsF(kMargin, kMargin, kMargin, kMargin)));
        return printer;
    }

    std::unique_ptr<PaperPrinter> paperPrinter() const {
        return std::make_unique<PaperPrinter>(filePrinter(folder.qtPath("out.pdf")));
    }

    double widthInPoints(QStringView text) const {
        const auto printer = paperPrinter();
        printer->setFont(QStringLiteral("Arial"), 9.75);
        return printer->textWidth(text) * kPointsPerUnit;
    }

    PdfDocument printed(const QString& text) const {
        printText(*paperPrinter(), text);
        return support::readPdf(folder.path("out.pdf"));
    }

    support::TemporaryFolder folder;
};

QString manyWords(int count) {
    QStringList words;
    for (int word = 1; word <= count; ++word) {
        words.append(QStringLiteral("word%1").arg(word));
    }
    return words.join(u' ');
}

TEST_F(Paper, ShowsTheWordsOfALongTextInTheirOrderOnSeveralPages) {
    const PdfDocument document = printed(manyWords(3000));
    EXPECT_GT(document.pages, 2);
    ASSERT_THAT(document.words, SizeIs(3000));
    for (std::size_t i = 0; i < document.words.size(); ++i) {
        ASSERT_EQ(document.words[i].text, "word" + std::to_string(i + 1));
    }
}

TEST_F(Paper, KeepsTheWordsInsideItsEdgesAndTheMarginOfEightWideLetters) {
    const double margin = widthInPoints(u"ZZZZZZZZ");
    const double space = widthInPoints(u" ");
    const PdfDocument document = printed(manyWords(3000));
    const double limit = document.pageWidth - kMargin - margin;
    const PdfWord* before = nullptr;
    for (const PdfWord& word : document.words) {
        EXPECT_GE(word.left, kMargin - 1);
        EXPECT_LE(word.right, limit + 1);
        EXPECT_GE(word.top, kMargin - 1);
        EXPECT_LE(word.bottom, document.pageHeight - kMargin + 1);
        if (before != nullptr && word.left < before->left) {
            EXPECT_GT(before->right + space + word.right - word.left, limit - 1) << "a line broken too early";
        }
        before = &word;
    }
    EXPECT_GT(space, 2);
    EXPECT_GT(margin, 8 * 5);
}

TEST_F(Paper, BeginsANewLineAtEveryKindOfLineBreak) {
    const PdfDocument document = printed(QStringLiteral("one\r\ntwo\nthree\rfour\r\n\r\nsix last"));
    EXPECT_THAT(document.lines(), ElementsAre("one", "two", "three", "four", "six last"));
    ASSERT_THAT(document.words, SizeIs(6));
    const double lineHeight = document.words[1].bottom - document.words[0].bottom;
    EXPECT_NEAR(document.words[3].bottom - document.words[2].bottom, lineHeight, 0.5);
    EXPECT_NEAR(document.words[4].bottom - document.words[3].bottom, 2 * lineHeight, 0.5);
    EXPECT_NEAR(document.words[4].left, document.words[0].left, 0.5);
}

TEST_F(Paper, ContinuesAWordThatIsWiderThanThePageOnTheNextLine) {
    const std::string letters(1000, 'm');
    const PdfDocument document = printed(QString::fromStdString(letters + " after"));
    std::string found;
    for (const PdfWord& word : document.words) {
        EXPECT_LE(word.right, document.pageWidth - kMargin + 1);
        found += word.text;
    }
    EXPECT_EQ(found, letters + "after");
    EXPECT_GT(document.lines().size(), 5U);
}

TEST_F(Paper, LeadsTabsToTheNextStop) {
    const PdfDocument document = printed(QStringLiteral("a\tb\nabcde\tb\n\t\tc"));
    ASSERT_THAT(document.words, SizeIs(5));
    EXPECT_NEAR(document.words[1].left, document.words[3].left, 0.5);
    const double stop = document.words[1].left - document.words[0].left;
    EXPECT_NEAR(document.words[4].left - document.words[0].left, 2 * stop, 0.5);
}

TEST_F(Paper, ShowsControlCharactersInsteadOfObeyingThem) {
    const PdfDocument document = printed(QStringLiteral("form\ffeed right\u202Eleft"));
    EXPECT_EQ(document.pages, 1);
    // Few fonts have the sign for the form feed, so its line is only checked at both ends.
    EXPECT_THAT(document.lines(), ElementsAre(AllOf(StartsWith("form"), EndsWith("feed right<202E>left"))));
}

TEST_F(Paper, ShowsLettersOfManyScripts) {
    const PdfDocument document =
        printed(QStringLiteral("Gr\u00FC\u00DFe \u041F\u0440\u0438\u0432\u0435\u0442 \u20AC"));
    EXPECT_THAT(document.lines(), ElementsAre("Gr\u00FC\u00DFe \u041F\u0440\u0438\u0432\u0435\u0442 \u20AC"));
}

TEST_F(Paper, IsOneEmptyPageForAnEmptyMessage) {
    const PdfDocument document = printed({});
    EXPECT_EQ(document.pages, 1);
    EXPECT_THAT(document.words, SizeIs(0));
}

TEST_F(Paper, BeginsNoPageThatNothingStandsOn) {
    QString fullPage = QStringLiteral("x");
    while (printed(fullPage + QStringLiteral("\nx")).pages == 1) {
        fullPage += QStringLiteral("\nx");
    }
    EXPECT_GT(fullPage.size(), 2 * 40);
    EXPECT_EQ(printed(fullPage).pages, 1);
    EXPECT_EQ(printed(fullPage + QString(10, u'\n')).pages, 1);
    EXPECT_EQ(printed(fullPage + QString(10, u'\n') + u'x').pages, 2);
    EXPECT_EQ(printed(fullPage + QString(500, u'\n') + u'x').words.back().page,
              2 + 499 / ((int(fullPage.size()) + 1) / 2));
}

TEST_F(Paper, MeasuresAsFarAsItPrints) {
    const auto printer = paperPrinter();
    printer->setFont(QStringLiteral("Arial"), 9.75);
    for (const QStringView text : {u"word", u" ", u"a\tb", u"", u"AVAVAV", u"\u200Ex"}) {
        const double before = printer->currentX();
        const double width = printer->textWidth(text);
        printer->print(text);
        EXPECT_NEAR(printer->currentX() - before, width, 0.01) << text.toString().toStdString();
    }
}

TEST_F(Paper, MeasuresTheWidestOfSeveralLines) {
    const auto printer = paperPrinter();
    printer->setFont(QStringLiteral("Arial"), 9.75);
    const double wide = printer->textWidth(u"wwwwwww");
    EXPECT_EQ(printer->textWidth(u"i\r\nwwwwwww\r\nii"), wide);
    EXPECT_EQ(printer->textWidth(u"wwwwwww\ni"), wide);
}

TEST_F(Paper, PausesBetweenThePiecesOfOneEndlessWordToo) {
    const auto printer = paperPrinter();
    int pauses = 0;
    printer->betweenPieces = [&pauses] { ++pauses; };
    printText(*printer, QString(10'000, u'x'));
    EXPECT_GT(pauses, 100);
}

TEST_F(Paper, ThatRunsOutInTheMidstIsAPrinterError) {
    class OnePagePrinter : public QPrinter {
      public:
        OnePagePrinter() : QPrinter(QPrinter::HighResolution) {}

        bool newPage() override { return false; }
    };

    auto onePage = std::make_unique<OnePagePrinter>();
    onePage->setOutputFormat(QPrinter::PdfFormat);
    onePage->setOutputFileName(folder.qtPath("out.pdf"));
    PaperPrinter printer(std::move(onePage));
    EXPECT_EQ(errorNumberOf([&printer] { printer.print(u"the first page"); }), 0);
    EXPECT_EQ(errorNumberOf([&printer] { printText(printer, manyWords(3000)); }), 482);
}

TEST_F(Paper, ThatCannotBeHadIsAPrinterError) {
    const QString nowhere = QStringLiteral("/nonexistent/folder/out.pdf");
    EXPECT_EQ(errorNumberOf([&] { const PaperPrinter printer(filePrinter(nowhere)); }), 482);
}

} // namespace
