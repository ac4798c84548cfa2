// The built program as an administrator runs it.

#include "tests/doctor/doctor_program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using support::DoctorProgram;
using support::Ended;
using support::kPassword;
using testing::Contains;
using testing::Not;

TEST_F(DoctorProgram, NeedsNoDisplayAndFindsNothingThatStopsMembers) {
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 0) << ended.output.toStdString();
    EXPECT_EQ(ended.json().value(QStringLiteral("status")).toInt(-1), 0);
    EXPECT_EQ(ended.json().value(QStringLiteral("settings")).toArray().size(), 16);
    EXPECT_EQ(ended.json().value(QStringLiteral("servers")).toArray().size(), 2);
    EXPECT_TRUE(ended.errors.isEmpty()) << ended.errors.toStdString();
}

TEST_F(DoctorProgram, TellsAPersonInText) {
    writeWork(fields);
    const Ended ended = run({QStringLiteral("--doctor")});
    EXPECT_EQ(ended.status, 0);
    EXPECT_TRUE(ended.output.contains("Settings\n")) << ended.output.toStdString();
    EXPECT_TRUE(ended.output.contains("POPServer"));
    EXPECT_TRUE(ended.output.contains("Nothing that was examined stops members."));
}

TEST_F(DoctorProgram, WritesNoFileAndShowsNoPassword) {
    writeWork(fields);
    const auto before = everything();
    const Ended ended = examine();
    // The settings were written anew by the test itself.
    EXPECT_EQ(everything().size(), before.size());
    for (const QByteArray& said : {ended.output, ended.errors}) {
        EXPECT_FALSE(said.contains(kPassword));
        EXPECT_FALSE(said.contains(QByteArray(kPassword).toBase64()));
    }
    EXPECT_THAT(popServer.commands(), Contains(std::string("PASS ") + kPassword));
    EXPECT_THAT(popServer.keywords(), Not(Contains("RETR")));
    EXPECT_THAT(popServer.keywords(), Not(Contains("DELE")));
    EXPECT_THAT(smtpServer.keywords(), Not(Contains("MAIL")));
}

TEST_F(DoctorProgram, ChangesIntoTheFolderOfTheSettingsFirst) {
    writeWork(fields);
    const QString work = folder.qtPath("work");
    filesystem::create_directory(folder.path("work/elsewhere"));
    const auto process = std::make_unique<QProcess>();
    process->setWorkingDirectory(folder.qtPath("work/elsewhere"));
    process->setProcessEnvironment(environment);
    process->start(program, {QStringLiteral("--settings-folder=") + work, QStringLiteral("--doctor"),
                             QStringLiteral("--json")});
    ASSERT_TRUE(process->waitForFinished(60'000));
    EXPECT_EQ(process->exitCode(), 0);
    const Ended missing = run({QStringLiteral("--settings-folder=none"), QStringLiteral("--doctor")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.output.isEmpty());
    EXPECT_TRUE(missing.errors.contains("none"));
}

TEST_F(DoctorProgram, ATypedHostIsToldSinceItTakesThePlaceOfTheSettings) {
    writeWork(fields);
    const QString typed = QStringLiteral("ann@plain://") + popServer.address();
    const auto looksAs = [&](const QString& name) {
        return run({QStringLiteral("--doctor"), QStringLiteral("--json"), QStringLiteral("--user=") + name,
                    QStringLiteral("--password-stdin")},
                   QByteArray(kPassword) + "\n");
    };
    EXPECT_EQ(looksAs(typed).grade(0, "members send as @127.0.0.1"), QStringLiteral("info"));
    EXPECT_EQ(looksAs(QStringLiteral("ann")).grade(0, "typed behind the @"), QString());
}

TEST_F(DoctorProgram, WrongUseIsStatus2WithTheUsageAndNoWindow) {
    for (const QStringList& wrong : {QStringList{QStringLiteral("--unknown")},
                                     {QStringLiteral("word")},
                                     {QStringLiteral("--mail=mime")},
                                     {QStringLiteral("--doctor"), QStringLiteral("--user=ann")},
                                     {QStringLiteral("--doctor"), QStringLiteral("--password-stdin")}}) {
        const Ended ended = run(wrong);
        EXPECT_EQ(ended.status, 2) << wrong.join(u' ').toStdString();
        EXPECT_TRUE(ended.output.isEmpty());
        EXPECT_TRUE(ended.errors.contains("Usage: brindlewake"));
    }
    const Ended noPassword =
        run({QStringLiteral("--doctor"), QStringLiteral("--user=ann"), QStringLiteral("--password-stdin")});
    EXPECT_EQ(noPassword.status, 2);
}

TEST_F(DoctorProgram, TellsItsVersionAndThoseOfItsLibraries) {
    const Ended version = run({QStringLiteral("--version")});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.startsWith("Brindlewake "));
    EXPECT_TRUE(version.output.contains(QByteArray("\nQt ") + qVersion() + "\n"));
    EXPECT_TRUE(version.output.contains("OpenSSL"));
    const Ended help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.startsWith("Usage: brindlewake"));
}
} // namespace
