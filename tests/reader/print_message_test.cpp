#include "platform/nested_wait.h"
#include "platform/runtime_error.h"
#include "platform/text_printer.h"
#include "reader/print_message.h"
#include "tests/support/application.h"
#include "tests/support/recording_printer.h"

#include <QDeadlineTimer>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace {

using platform::errorNumberOf;
using support::PrintedDocument;
using support::RecordingPrinter;
using testing::ElementsAre;

/** Replaces the default printer with one that records what it prints. */
class Printing : public testing::Test {
  protected:
    void SetUp() override {
        support::application();
        platform::replaceDefaultPrinter([this] {
            ++printers;
            return std::make_unique<RecordingPrinter>(document);
        });
    }

    void TearDown() override { platform::replaceDefaultPrinter({}); }

    PrintedDocument document;
    int printers = 0;
};

TEST_F(Printing, WritesTheTextToTheDefaultPrinter) {
    printMessageText(QStringLiteral("one two three"));
    EXPECT_EQ(printers, 1);
    EXPECT_THAT(document.lines, ElementsAre("one two ", "three "));
    EXPECT_EQ(document.documentEnds, 1);
}

TEST_F(Printing, OfAnEmptyMessageIsOneEmptyLine) {
    printMessageText({});
    EXPECT_THAT(document.lines, ElementsAre(""));
    EXPECT_EQ(document.documentEnds, 1);
}

TEST_F(Printing, WithoutAPrinterIsAPrinterError) {
    platform::replaceDefaultPrinter([]() -> std::unique_ptr<platform::TextPrinter> {
        throw platform::RuntimeError(platform::errors::PrinterError);
    });
    EXPECT_EQ(errorNumberOf([] { printMessageText(QStringLiteral("text")); }), 482);
    EXPECT_FALSE(platform::NestedWait::anyRuns());
}

/** Handles events while it prints its first text, until the condition holds. */
class SlowPrinter : public RecordingPrinter {
  public:
    SlowPrinter(PrintedDocument& document, const bool& condition)
        : RecordingPrinter(document), condition_(condition) {}

    void print(QStringView text) override {
        const QDeadlineTimer deadline(std::chrono::seconds(20));
        while (!condition_ && !deadline.hasExpired()) {
            betweenPieces();
        }
        RecordingPrinter::print(text);
    }

  private:
    const bool& condition_;
};

TEST_F(Printing, GoesOnWithItsTextWhenTheTextBoxIsEmptiedMeanwhile) {
    bool emptied = false;
    QString box = QStringLiteral("one two three");
    platform::replaceDefaultPrinter([&] { return std::make_unique<SlowPrinter>(document, emptied); });
    QTimer::singleShot(0, [&] {
        box.fill(u'-');
        emptied = true;
    });
    printMessageText(box);
    EXPECT_TRUE(emptied);
    EXPECT_THAT(document.lines, ElementsAre("one two ", "three "));
}

} // namespace
