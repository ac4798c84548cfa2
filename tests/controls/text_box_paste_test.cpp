// Whatever a clipboard holds or claims to hold is pasted as plain text or not at all.

#include "components/controls/pasted_text.h"
#include "components/controls/text_box.h"
#include "tests/support/window_test.h"

#include <QAction>
#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QTest>

#include <memory>
#include <new>
#include <string>

using controls::TextBox;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class TextBoxPaste : public support::WindowTest {
  public:
    ~TextBoxPaste() override { QGuiApplication::clipboard()->clear(); }

  protected:
    TextBoxPaste() {
        box.resize(400, 300);
        box.show();
        box.setFocus();
    }

    static void copy(QMimeData* data) { QGuiApplication::clipboard()->setMimeData(data); }

    static void copy(const QString& text) { QGuiApplication::clipboard()->setText(text); }

    void paste() { QTest::keyClick(&box, Qt::Key_V, Qt::ControlModifier); }

    void pasteFromTheMenu() {
        const std::unique_ptr<QMenu> menu(box.createStandardContextMenu());
        auto* const action = menu->findChild<QAction*>(QStringLiteral("edit-paste"));
        ASSERT_NE(action, nullptr);
        action->trigger();
    }

    void drop(const QMimeData& data) {
        // Qt accepts a drop only after a drag has entered the widget.
        QDragEnterEvent entering(box.viewport()->rect().center(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(box.viewport(), &entering);
        QDropEvent event(box.viewport()->rect().center(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(box.viewport(), &event);
    }

    /** Waits for a message box and checks that it is the only one and has this text. */
    void expectBox(const QString& text) {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !boxes.empty(); }));
        QCoreApplication::processEvents();
        EXPECT_THAT(boxTexts(), ElementsAre(text));
    }

    TextBox box;
};

/** A clipboard that offers a text and then gives none, as after its owner has ended. */
class DeadOwner : public QMimeData {
  public:
    QStringList formats() const override { return {QStringLiteral("text/plain")}; }

    bool hasFormat(const QString& format) const override { return formats().contains(format); }

  protected:
    QVariant retrieveData(const QString& /*format*/, QMetaType /*type*/) const override { return {}; }
};

/** A clipboard whose text does not fit in memory. */
class Gigabytes : public DeadOwner {
  protected:
    QVariant retrieveData(const QString& /*format*/, QMetaType /*type*/) const override {
        throw std::bad_alloc();
    }
};
} // namespace

TEST_F(TextBoxPaste, AnEmptyClipboardChangesNothing) {
    QGuiApplication::clipboard()->clear();
    box.setBytes("text");
    paste();
    pasteFromTheMenu();
    box.paste();
    drop(QMimeData());
    EXPECT_EQ(box.bytes(), "text");
    EXPECT_THAT(boxTexts(), IsEmpty());
}

TEST_F(TextBoxPaste, AnOwnerThatHasDiedChangesNothing) {
    copy(new DeadOwner);
    box.setBytes("text");
    paste();
    drop(DeadOwner());
    EXPECT_EQ(box.bytes(), "text");
}

TEST_F(TextBoxPaste, TextComesInInPlaceOfWhatIsChosenAndCanBeTakenBack) {
    box.setBytes("a wrong word");
    box.selectAll();
    copy(QStringLiteral("Grüße\r\nAnn"));
    paste();
    EXPECT_EQ(box.bytes(), "Gr\xc3\xbc\xc3\x9f"
                           "e\r\nAnn");
    EXPECT_EQ(box.textCursor().position(), 9);
    box.undo();
    EXPECT_EQ(box.toPlainText(), QStringLiteral("a wrong word"));
}

TEST_F(TextBoxPaste, TextCanBeDropped) {
    QMimeData data;
    data.setText(QStringLiteral("dropped"));
    drop(data);
    EXPECT_EQ(box.bytes(), "dropped");
}

TEST_F(TextBoxPaste, OfRichTextOnlyThePlainOneIsTaken) {
    auto* const rich = new QMimeData;
    rich->setHtml(QStringLiteral("<b>bold</b>"));
    rich->setText(QStringLiteral("bold"));
    copy(rich);
    paste();
    EXPECT_EQ(box.bytes(), "bold");
    auto* const onlyRich = new QMimeData;
    onlyRich->setHtml(QStringLiteral("<b>bold</b>"));
    copy(onlyRich);
    paste();
    EXPECT_EQ(box.bytes(), "bold");
}

TEST_F(TextBoxPaste, APictureAndForeignBytesAreNoText) {
    auto* const picture = new QMimeData;
    picture->setImageData(QImage(10, 10, QImage::Format_RGB32));
    picture->setData(QStringLiteral("application/octet-stream"), QByteArray(1'000, '\0'));
    copy(picture);
    paste();
    EXPECT_EQ(box.bytes(), "");
}

TEST_F(TextBoxPaste, BytesThatAreNoTextComeInAsSigns) {
    auto* const binary = new QMimeData;
    binary->setData(QStringLiteral("text/plain"), QByteArray("a\0b\xff", 4));
    copy(binary);
    paste();
    EXPECT_EQ(box.toPlainText().size(), 4);
    EXPECT_EQ(box.toPlainText().at(0), u'a');
    EXPECT_EQ(box.toPlainText().at(1), QChar(QChar::ReplacementCharacter));
}

TEST_F(TextBoxPaste, TooMuchIsRefusedByABoxThatSaysWhatToDo) {
    box.setBytes("text");
    copy(QString(controls::kMostPastedCharacters + 1, u'x'));
    paste();
    paste();
    expectBox(QStringLiteral("This is too much to be pasted: at most 4000000 characters on 60000 lines. "
                             "Please save it in a file and attach the file."));
    EXPECT_EQ(box.bytes(), "text");
    // A paste after the box was answered opens a box again.
    paste();
    EXPECT_TRUE(QTest::qWaitFor([this] { return boxes.size() == 2; }));
}

TEST_F(TextBoxPaste, OneLineOfMegabytesIsShownOnManyAndStaysOne) {
    copy(QString(1'000'000, u'x'));
    paste();
    EXPECT_EQ(box.document()->blockCount(), 100);
    EXPECT_EQ(box.bytes(), std::string(1'000'000, 'x'));
    box.undo();
    box.redo();
    EXPECT_EQ(box.bytes(), std::string(1'000'000, 'x'));
}

TEST_F(TextBoxPaste, WantOfMemoryEndsInABoxAndChangesNothing) {
    copy(new Gigabytes);
    box.setBytes("text");
    paste();
    expectBox(QStringLiteral("There is not enough memory, or something is far too large."));
    EXPECT_EQ(box.bytes(), "text");
}

TEST_F(TextBoxPaste, ATextThatIsOnlyReadTakesNothing) {
    box.setBytes("text");
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    copy(QStringLiteral("more"));
    paste();
    box.paste();
    QMimeData data;
    data.setText(QStringLiteral("more"));
    drop(data);
    EXPECT_EQ(box.bytes(), "text");
}
