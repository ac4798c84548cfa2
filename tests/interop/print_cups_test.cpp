#include "message/word_wrap.h"
#include "platform/nested_wait.h"
#include "platform/runtime_error.h"
#include "platform/text_printer.h"
#include "reader/print_message.h"
#include "tests/support/application.h"
#include "tests/support/cups_server.h"
#include "tests/support/pdf_words.h"
#include "tests/support/temporary_folder.h"

#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using platform::errorNumberOf;
using support::CupsServer;
using support::PdfDocument;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Cups : public testing::Test {
  protected:
    Cups() { support::application(); }

    void SetUp() override {
        CupsServer::takeThePlaceOfTheSystem();
        for (const std::string& reason : {CupsServer::whyUnavailable(), support::whyPdfIsUnreadable()}) {
            if (!reason.empty()) {
                GTEST_SKIP() << reason;
            }
        }
    }

    PdfDocument documentIn(const std::string& bytes) const {
        return support::readPdf(folder_.write("document.pdf", bytes));
    }

  private:
    support::TemporaryFolder folder_;
};

TEST_F(Cups, GetsAMessageThatIsPrinted) {
    const CupsServer cups;
    printMessageText(QStringLiteral("Dear Bob,\r\n\r\nthe lamp is on.\r\nAnn"));
    ASSERT_THAT(cups.documents(), SizeIs(1)) << cups.log();
    const PdfDocument document = documentIn(cups.documents().front());
    EXPECT_EQ(document.pages, 1);
    EXPECT_THAT(document.lines(), ElementsAre("Dear Bob,", "the lamp is on.", "Ann"));
}

TEST_F(Cups, GetsOneDocumentForEachPrint) {
    const CupsServer cups;
    printMessageText(QStringLiteral("first"));
    printMessageText(QStringLiteral("second"));
    ASSERT_THAT(cups.documents(), SizeIs(2)) << cups.log();
    EXPECT_THAT(documentIn(cups.documents().front()).lines(), ElementsAre("first"));
    EXPECT_THAT(documentIn(cups.documents().back()).lines(), ElementsAre("second"));
}

TEST_F(Cups, GetsALongMessageWhileTheWindowsLive) {
    const CupsServer cups;
    QString text;
    constexpr int kWords = 30'000;
    for (int word = 0; word < kWords; ++word) {
        text += QStringLiteral("word ");
    }
    int beats = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&beats] {
        EXPECT_TRUE(platform::NestedWait::anyRuns());
        ++beats;
    });
    heart.start(0);
    printMessageText(text);
    EXPECT_GT(beats, 0);
    EXPECT_FALSE(platform::NestedWait::anyRuns());
    ASSERT_THAT(cups.documents(), SizeIs(1)) << cups.log();
    const PdfDocument document = documentIn(cups.documents().front());
    EXPECT_THAT(document.words, SizeIs(kWords));
    EXPECT_GT(document.pages, 10);
}

TEST_F(Cups, ThatHasDiedBeforeTheDocumentEndsIsAPrinterError) {
    CupsServer cups;
    const int error = errorNumberOf([&cups] {
        const auto printer = platform::makeDefaultPrinter();
        cups.stop();
        printText(*printer, u"never printed");
    });
    EXPECT_EQ(error, 482);
    EXPECT_THAT(cups.documents(), IsEmpty());
}

TEST_F(Cups, ThatRejectsTheDocumentIsAPrinterError) {
    const CupsServer cups(CupsServer::Queue::Rejecting);
    EXPECT_EQ(errorNumberOf([] { printMessageText(QStringLiteral("never printed")); }), 482);
    EXPECT_THAT(cups.documents(), IsEmpty());
}

TEST_F(Cups, WithoutAPrinterIsAPrinterError) {
    const CupsServer cups(CupsServer::Queue::None);
    EXPECT_EQ(errorNumberOf([] { printMessageText(QStringLiteral("never printed")); }), 482);
    EXPECT_THAT(cups.documents(), IsEmpty());
}

TEST_F(Cups, PrintsAgainAfterAFailure) {
    {
        const CupsServer cups(CupsServer::Queue::Rejecting);
        EXPECT_EQ(errorNumberOf([] { printMessageText(QStringLiteral("never printed")); }), 482);
    }
    const CupsServer cups;
    EXPECT_EQ(errorNumberOf([] { printMessageText(QStringLiteral("printed")); }), 0);
    ASSERT_THAT(cups.documents(), SizeIs(1)) << cups.log();
    EXPECT_THAT(documentIn(cups.documents().front()).lines(), ElementsAre("printed"));
}

TEST(NoPrintingSystem, IsAPrinterError) {
    support::application();
    CupsServer::takeThePlaceOfTheSystem();
    EXPECT_EQ(errorNumberOf([] { printMessageText(QStringLiteral("text")); }), 482);
}

} // namespace
