#include "email/settings_file.h"
#include "platform/sequential_file.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using email::fieldsOf;
using email::Settings;
using email::SettingsFields;
using email::settingsFileText;

Settings otherSettings() {
    return {QStringLiteral("no"),
            QStringLiteral("pop.school.example"),
            QStringLiteral("smtp.school.example:2525"),
            QStringLiteral("school.example"),
            QStringLiteral("  K\u00F6ln = School "),
            QStringLiteral("yes"),
            QStringLiteral("yes"),
            QStringLiteral("yes"),
            QStringLiteral("C:\\Mail"),
            QStringLiteral("Yes"),
            QStringLiteral("YES"),
            QStringLiteral("yes"),
            -60,
            QStringLiteral("[::1]:389"),
            QStringLiteral("o=Hill School,c=gb"),
            QStringLiteral("Directory Server")};
}

TEST(SettingsWriter, WritesTheDefaultsAsNineteenLines) {
    const std::string expected = "ShowSetup=yes\r\n"
                                 "[MailServer Info]\r\n"
                                 "POPServer=mail.example.org\r\n"
                                 "SMTPServer=mail.example.org\r\n"
                                 "DomainName=example.org\r\n"
                                 "[Institution Properties]\r\n"
                                 "Institution=Your Name Here\r\n"
                                 "[Application Options]\r\n"
                                 "PlayWav=no\r\n"
                                 "ShowDatabase=no\r\n"
                                 "SendAttachments=no\r\n"
                                 "SaveDirectory=A:\\\r\n"
                                 "AllowPrinting=no\r\n"
                                 "SaveCopy=no\r\n"
                                 "ShowGetMail=no\r\n"
                                 "GetMailEvery=0\r\n"
                                 "LDAPServer=directory.example.org\r\n"
                                 "LDAPSearchBase=c=us\r\n"
                                 "AddressLookup=Personal Address Book\r\n";
    EXPECT_EQ(settingsFileText(fieldsOf(Settings()), Settings()), expected);
    EXPECT_EQ(settingsFileText(SettingsFields(), Settings()), expected);
}

TEST(SettingsWriter, WritesEveryFieldUnderItsOwnKey) {
    EXPECT_EQ(settingsFileText(fieldsOf(otherSettings()), Settings()),
              "ShowSetup=no\r\n"
              "[MailServer Info]\r\n"
              "POPServer=pop.school.example\r\n"
              "SMTPServer=smtp.school.example:2525\r\n"
              "DomainName=school.example\r\n"
              "[Institution Properties]\r\n"
              "Institution=  K\xC3\xB6ln = School \r\n"
              "[Application Options]\r\n"
              "PlayWav=yes\r\n"
              "ShowDatabase=yes\r\n"
              "SendAttachments=yes\r\n"
              "SaveDirectory=C:\\Mail\r\n"
              "AllowPrinting=Yes\r\n"
              "SaveCopy=YES\r\n"
              "ShowGetMail=yes\r\n"
              "GetMailEvery=-60\r\n"
              "LDAPServer=[::1]:389\r\n"
              "LDAPSearchBase=o=Hill School,c=gb\r\n"
              "AddressLookup=Directory Server\r\n");
}

TEST(SettingsWriter, AnEmptiedServerFieldWritesTheOldServerBack) {
    SettingsFields fields = fieldsOf(Settings());
    fields.POPServer.clear();
    const std::string text = settingsFileText(fields, otherSettings());
    EXPECT_NE(text.find("\r\nPOPServer=pop.school.example\r\n"), std::string::npos);
    EXPECT_NE(text.find("\r\nSMTPServer=mail.example.org\r\n"), std::string::npos);
}

TEST(SettingsWriter, AllFieldsEmptyWriteAllOldSettingsBack) {
    EXPECT_EQ(settingsFileText(SettingsFields(), otherSettings()),
              settingsFileText(fieldsOf(otherSettings()), Settings()));
}

TEST(SettingsWriter, ASpaceIsAValueAndNotAnEmptyField) {
    SettingsFields fields;
    fields.Institution = QStringLiteral(" ");
    EXPECT_NE(settingsFileText(fields, Settings()).find("\r\nInstitution= \r\n"), std::string::npos);
}

TEST(SettingsWriter, ALineEndInAFieldBecomesASpaceSinceItWouldShiftAllThatFollows) {
    SettingsFields fields;
    fields.Institution = QStringLiteral("Hill\r\nSchool\nof\rMail");
    EXPECT_NE(settingsFileText(fields, Settings()).find("\r\nInstitution=Hill  School of Mail\r\n"),
              std::string::npos);
}

TEST(SettingsWriter, WhatIsWrittenIsReadBackTheSame) {
    const support::TemporaryFolder folder;
    platform::writeWholeFile(folder.qtPath(email::kSettingsFileName),
                             settingsFileText(fieldsOf(otherSettings()), Settings()));
    platform::SequentialInput file(folder.qtPath(email::kSettingsFileName));
    Settings settings;
    email::DerivedValues derived;
    email::readSettings([&file] { return file.nextLine(); }, settings, derived, [](bool) {});
    EXPECT_EQ(settingsFileText(fieldsOf(settings), Settings()),
              settingsFileText(fieldsOf(otherSettings()), Settings()));
    EXPECT_EQ(settings.Institution, otherSettings().Institution);
    EXPECT_EQ(settings.LDAPSearchBase, otherSettings().LDAPSearchBase);
    EXPECT_EQ(settings.GetMailEvery, -60);
    EXPECT_EQ(derived.AtDomain.toStdString(), "@school.example");
}

TEST(SettingsWriter, AllByteValuesThatALineCanHoldSurviveTheRoundTrip) {
    SettingsFields fields;
    for (char16_t code = 0; code < 0x2100; ++code) {
        if (code != u'\r' && code != u'\n') {
            fields.Institution.append(QChar(code));
        }
    }
    const std::string text = settingsFileText(fields, Settings());
    const support::TemporaryFolder folder;
    folder.write(email::kSettingsFileName, text);
    platform::SequentialInput file(folder.qtPath(email::kSettingsFileName));
    Settings settings;
    email::DerivedValues derived;
    email::readSettings([&file] { return file.nextLine(); }, settings, derived, [](bool) {});
    EXPECT_EQ(settings.Institution, fields.Institution);
}

} // namespace
