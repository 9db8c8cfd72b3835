// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SongHistory.h"

#include "app/Settings.h"
#include "app/SongNotifier.h"
#include "tests/support/FakeDefaultsStore.h"
#include "tests/support/PrintQt.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

RadioState playing(const QString& song) {
    RadioState state;
    state.station = RadioStation::qmusic;
    state.isPlaying = true;
    state.isLoading = false;
    state.currentSong = song;
    return state;
}

TimePoint at(int seconds) {
    return TimePoint(std::chrono::seconds(seconds));
}

class MemoryFile final : public OwnFile {
public:
    QByteArray read() override {
        ++reads;
        return content;
    }
    void write(const QByteArray& written) override {
        content = written;
        ++writes;
    }
    QByteArray content;
    int reads = 0;
    int writes = 0;
};

class RecordingNotifications final : public Notifications {
public:
    void show(const QString& title, const QString& text) override { shown << title + u" / "_qs + text; }
    QStringList shown;
};

TEST(SongHistoryTest, NotesEachSongOnce) {
    SongHistory history;
    EXPECT_TRUE(history.note(playing(u"A – One"_qs), at(10)));
    EXPECT_FALSE(history.note(playing(u"A – One"_qs), at(20)));
    EXPECT_TRUE(history.note(playing(u"B – Two"_qs), at(30)));
    EXPECT_TRUE(history.note(playing(u"A – One"_qs), at(40))) << "again, later";
    ASSERT_EQ(history.songs().size(), 3U);
    EXPECT_EQ(history.songs()[0], (PlayedSong{10, u"qmusic"_qs, u"A – One"_qs}));
    EXPECT_EQ(history.songs()[2].time, 40);
}

TEST(SongHistoryTest, NotesOnlyWhatIsHeardAndKnown) {
    SongHistory history;
    RadioState state = playing(u"Loading..."_qs);
    state.isLoading = true;
    EXPECT_FALSE(history.note(state, at(1)));
    state = playing(u"A – One"_qs);
    state.isPlaying = false;
    EXPECT_FALSE(history.note(state, at(1)));
    EXPECT_FALSE(history.note(playing(u"Qmusic"_qs), at(1))) << "the station stands in for its song";
    EXPECT_FALSE(history.note(playing(u"  "_qs), at(1)));
    EXPECT_TRUE(history.songs().empty());
}

TEST(SongHistoryTest, KeepsTheLastTwoHundred) {
    SongHistory history;
    for (int i = 0; i < 250; ++i)
        history.note(playing(QString::number(i)), at(i));
    EXPECT_EQ(history.songs().size(), 200U);
    EXPECT_EQ(history.songs().front().song, u"50"_qs);
    EXPECT_EQ(history.songs().back().song, u"249"_qs);
    const SongHistory read(history.toJson());
    EXPECT_EQ(read.songs(), history.songs());
    history.note(playing(QString(100'000, u'x')), at(300));
    EXPECT_LE(history.toJson().size(), SongHistory::maxBytes) << "what is written can be read";
}

TEST(SongHistoryTest, LeavesOutWhatIsNoSong) {
    EXPECT_TRUE(SongHistory("").songs().empty());
    EXPECT_TRUE(SongHistory("{}").songs().empty());
    EXPECT_EQ(SongHistory(R"([{"time":1,"station":"joe","song":"x"},{"time":"1"},7])").songs().size(), 1U);
}

TEST(SongHistoryTest, IsPrintedALineForEachAndForgesNone) {
    SongHistory history;
    history.note(playing(u"A\n2020-01-01 forged"_qs), at(60));
    const QString lines = history.lines();
    EXPECT_FALSE(lines.contains(u'\n'));
    EXPECT_TRUE(lines.contains(u"  Qmusic: A"_qs)) << lines.toStdString();
    const auto list = QJsonDocument::fromJson(history.forScripts().toUtf8()).array();
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list[0].toObject().value(u"station"_qs).toString(), u"qmusic"_qs);
    const auto time = QDateTime::fromString(list[0].toObject().value(u"time"_qs).toString(), Qt::ISODate);
    EXPECT_EQ(time.toSecsSinceEpoch(), 60);
}

TEST(SongLogTest, AddsToWhatTheFileHolds) {
    MemoryFile file;
    FakeDefaultsStore defaults;
    file.content = R"([{"time":1,"station":"joe","song":"x"}])";
    SongLog log(file, defaults, [] { return at(5); });
    EXPECT_EQ(file.reads, 0) << "nothing is read before there is something to add";
    log.show(playing(u"y"_qs));
    log.show(playing(u"y"_qs));
    EXPECT_EQ(file.reads, 1);
    EXPECT_EQ(file.writes, 1);
    EXPECT_EQ(SongHistory(file.content).songs().size(), 2U);
}

TEST(SongLogTest, IsSilencedByOneSetting) {
    MemoryFile file;
    FakeDefaultsStore defaults;
    defaults.setString(keepHistoryKey, u"false"_qs);
    SongLog log(file, defaults, [] { return at(5); });
    log.show(playing(u"y"_qs));
    EXPECT_EQ(file.reads + file.writes, 0);
}

TEST(SongNotifierTest, AnnouncesEachNewSongWhereItIsWanted) {
    RecordingNotifications notifications;
    FakeDefaultsStore defaults;
    bool isPanelOpen = false;
    SongNotifier notifier(notifications, defaults, [&] { return isPanelOpen; });
    notifier.show(playing(u"one"_qs));
    EXPECT_EQ(notifications.shown, QStringList()) << "off at first";
    defaults.setString(announceSongsKey, u"true"_qs);
    notifier.show(playing(u"one"_qs));
    EXPECT_EQ(notifications.shown, QStringList()) << "no new song";
    notifier.show(playing(u"two"_qs));
    notifier.show(playing(u"two"_qs));
    EXPECT_EQ(notifications.shown, QStringList{u"two / Qmusic"_qs});
    isPanelOpen = true;
    notifier.show(playing(u"three"_qs));
    isPanelOpen = false;
    notifier.show(playing(u"three"_qs));
    EXPECT_EQ(notifications.shown.size(), 1) << "the panel has shown it";
}

TEST(HistorySettingsTest, SwitchesAreWrittenAsPeopleWriteThem) {
    FakeDefaultsStore defaults;
    EXPECT_TRUE(isOn(defaults, keepHistoryKey, true));
    EXPECT_FALSE(isOn(defaults, keepHistoryKey, false));
    for (const QString& on : {u"true"_qs, u"On"_qs, u" yes "_qs, u"1"_qs}) {
        defaults.setString(keepHistoryKey, on);
        EXPECT_TRUE(isOn(defaults, keepHistoryKey, false)) << on.toStdString();
    }
    for (const QString& off : {u"false"_qs, u"off"_qs, u"No"_qs, u"0"_qs}) {
        defaults.setString(keepHistoryKey, off);
        EXPECT_FALSE(isOn(defaults, keepHistoryKey, true)) << off.toStdString();
    }
    defaults.setString(keepHistoryKey, u"perhaps"_qs);
    EXPECT_TRUE(isOn(defaults, keepHistoryKey, true));
    EXPECT_FALSE(isOn(defaults, keepHistoryKey, false));
}

} // namespace
} // namespace zofra::test
