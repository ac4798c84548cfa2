// That it is said at once needs somebody who listens: tests/accessibility/new_mail does.

#include "components/controls/announcement.h"
#include "tests/support/application.h"

#include <QAccessible>
#include <gtest/gtest.h>

TEST(Announcement, IsANotificationToScreenReadersAndNotSeen) {
    support::application();
    QWidget window;
    controls::Announcement announcement(&window);
    window.show();
    announcement.tell(QStringLiteral("2 new messages"));
    const QAccessibleInterface* const thing = QAccessible::queryAccessibleInterface(&announcement);
    ASSERT_NE(thing, nullptr);
    EXPECT_EQ(thing->role(), QAccessible::Notification);
    EXPECT_EQ(thing->text(QAccessible::Name), QStringLiteral("2 new messages"));
    EXPECT_FALSE(announcement.isVisible());
}
