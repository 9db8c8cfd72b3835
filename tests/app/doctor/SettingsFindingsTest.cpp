// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SettingsFindings.h"

#include "tests/support/PrintQt.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace zofra::doctor {
namespace {

class SettingsFindingsTest : public testing::Test {
protected:
    void put(const QByteArray& bytes) const {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] Finding judged() const { return judgeSettings(SettingsFacts::of(path)); }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("config/zofrazofra/zofrazofra.ini"));
};

TEST_F(SettingsFindingsTest, NeedNotBeThere) {
    const auto finding = judged();
    EXPECT_EQ(finding.verdict, Verdict::ok);
    EXPECT_TRUE(finding.text.contains(u"not there yet"_qs));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden),
              QStringList())
        << "looking leaves nothing behind";
}

TEST_F(SettingsFindingsTest, AreFineWithAnythingThatTheProgramWrites) {
    put("[General]\nzofra_radio_volume=0.35\nzofra_selected_station=joe\napp_language=nl\nmine=1\nnonsense\n"
        "[tray]\nmode=hostmenu\n");
    EXPECT_EQ(judged().verdict, Verdict::ok) << judged().text.toStdString();
    EXPECT_EQ(QDir(QFileInfo(path).path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{u"zofrazofra.ini"_qs});
}

TEST_F(SettingsFindingsTest, NameEveryValueThatCountsForNothing) {
    put("[General]\nzofra_radio_volume=7.5\nzofra_selected_station=JOE\napp_language=NL\n[tray]\nmode=x\n");
    const auto finding = judged();
    EXPECT_EQ(finding.verdict, Verdict::problem);
    for (const QString& word : {u"zofra_radio_volume = 7.5"_qs, u"zofra_selected_station = JOE"_qs,
                                u"app_language = NL"_qs, u"tray/mode = x"_qs})
        EXPECT_TRUE(finding.text.contains(word)) << word.toStdString();
    for (const QByteArray text : {"nan", "loud", "-0.1", "1.01", ""}) {
        put("[General]\nzofra_radio_volume=" + text + "\n");
        EXPECT_EQ(judged().verdict, Verdict::problem) << text.toStdString();
    }
}

TEST_F(SettingsFindingsTest, AreAProblemWhenTheyCannotBeReadOrWritten) {
    put("[General]\n");
    ASSERT_EQ(::chmod(path.toUtf8().constData(), 0444), 0);
    EXPECT_TRUE(judged().text.contains(u"cannot be written: it is read-only"_qs));
    EXPECT_TRUE(judged().cure.contains(u"chmod"_qs));
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QDir().mkpath(path));
    EXPECT_TRUE(judged().text.contains(u"cannot be read: Is a directory"_qs));
}

TEST_F(SettingsFindingsTest, AreAProblemOnAFullDisk) {
    SettingsFacts facts;
    facts.path = path;
    facts.exists = true;
    facts.writeProblem = u"No space left on device"_qs;
    EXPECT_TRUE(judgeSettings(facts).cure.contains(u"make room"_qs));
    facts.writeProblem = u"Disk quota exceeded"_qs;
    EXPECT_TRUE(judgeSettings(facts).cure.contains(u"make room"_qs));
}

TEST_F(SettingsFindingsTest, AreAProblemWhenDamaged) {
    put(QByteArray("\0\1\2", 3));
    EXPECT_TRUE(judged().text.contains(u"damaged"_qs));
}

TEST(EndpointsFindingsTest, AreNamedOrWrong) {
    EXPECT_EQ(judgeEndpoints({}).text, u"no file: the built-in hosts"_qs);
    EXPECT_EQ(judgeEndpoints({{u"/etc/a"_qs, u"/b"_qs}, {}}).text, u"/etc/a, /b"_qs);
    const auto wrong = judgeEndpoints({{u"/b"_qs}, u"/b:3: joe_aac = x y: no host"_qs});
    EXPECT_EQ(wrong.verdict, Verdict::problem);
    EXPECT_EQ(wrong.text, u"/b:3: joe_aac = x y: no host"_qs);
}

} // namespace
} // namespace zofra::doctor
