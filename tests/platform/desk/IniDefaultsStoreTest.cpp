// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/IniDefaultsStore.h"

#include "platform/linux/ThreadTaskPool.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FakeTaskPool.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"
#include "tests/support/RecordingOutput.h"
#include "tests/support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>

#include <clocale>
#include <cmath>
#include <csignal>
#include <gtest/gtest.h>
#include <limits>
#include <mutex>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace zofra {
namespace {

using namespace std::chrono_literals;

const auto volumeKey = QStringLiteral("zofra_radio_volume");
const auto stationKey = QStringLiteral("zofra_selected_station");

class IniDefaultsStoreTest : public testing::Test {
protected:
    std::unique_ptr<IniDefaultsStore> open() { return open(pool); }
    std::unique_ptr<IniDefaultsStore> open(TaskPool& with) {
        return std::make_unique<IniDefaultsStore>(
            path, with, [this](const QString& line) { lines.push_back(line); },
            IniDefaultsStore::Options{.lockWait = 0ms, .ranges = {}});
    }
    void put(const QByteArray& bytes) const {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }
    [[nodiscard]] QByteArray content() const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    /// Of a damaged file.
    [[nodiscard]] QByteArray copy(const QString& number = {}) const {
        QFile file(path + QStringLiteral(".damaged") + number);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    [[nodiscard]] QString onlyLine() const {
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? QString() : QString(lines.front()).replace(path, QStringLiteral("FILE"));
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("config/zofrazofra/zofrazofra.ini"));
    test::FakeTaskPool pool{test::FakeTaskPool::Mode::inPlace};
    test::FakeTaskPool later{test::FakeTaskPool::Mode::onDemand};
    std::vector<QString> lines;
};

TEST_F(IniDefaultsStoreTest, isEmptyAndSilentAtFirst) {
    const auto store = open();
    EXPECT_EQ(store->string(stationKey), std::nullopt);
    EXPECT_EQ(store->floatValue(volumeKey), std::nullopt);
    EXPECT_EQ(store->data(stationKey), std::nullopt);
    EXPECT_TRUE(lines.empty());
    EXPECT_FALSE(QFileInfo::exists(path)) << "reading makes no file";
}

TEST_F(IniDefaultsStoreTest, writesWhatAPersonCanRead) {
    {
        const auto store = open();
        store->setString(stationKey, QStringLiteral("qmusic"));
        store->setFloat(volumeKey, 0.35F);
        store->setData(QStringLiteral("cached_sonos_rooms"), R"([{"id":"R1","title":"Küche"}])");
    }
    EXPECT_EQ(content(), "[General]\nzofra_selected_station=qmusic\nzofra_radio_volume=0.35\n"
                         "cached_sonos_rooms=[{\"id\":\"R1\",\"title\":\"Küche\"}]\n");
    const auto store = open();
    EXPECT_EQ(store->string(stationKey), QStringLiteral("qmusic"));
    EXPECT_EQ(store->floatValue(volumeKey), 0.35F);
    EXPECT_EQ(store->data(QStringLiteral("cached_sonos_rooms")), R"([{"id":"R1","title":"Küche"}])");
    EXPECT_TRUE(lines.empty());
}

TEST_F(IniDefaultsStoreTest, makesPrivateFoldersAndFile) {
    open()->setString(stationKey, QStringLiteral("joe"));
    struct stat status {};
    ASSERT_EQ(stat(path.toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat(folder.filePath(QStringLiteral("config")).toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(IniDefaultsStoreTest, keepsEveryFloatExactly) {
    const auto store = open();
    for (const float value :
         {0.0F, 1.0F, 0.8F, 0.62F, 1.0F / 3.0F, 1e-7F, std::numeric_limits<float>::min()}) {
        store->setFloat(volumeKey, value);
        EXPECT_EQ(store->floatValue(volumeKey), value);
        EXPECT_EQ(open()->floatValue(volumeKey), value);
    }
}

TEST_F(IniDefaultsStoreTest, readsOnlyFiniteNumbers) {
    const std::vector<std::pair<QByteArray, std::optional<float>>> expected{
        {"0.35", 0.35F}, {"\"0.35\"", 0.35F}, {" 0.35 ", 0.35F},    {"+0.5", 0.5F}, {"1", 1.0F},
        {"5e-1", 0.5F},  {"-0.25", -0.25F},   {"0.5 ; half", 0.5F}, {"0,35", {}},   {"nan", {}},
        {"inf", {}},     {"-inf", {}},        {"1e400", {}},        {"0.35x", {}},  {"", {}},
        {"loud", {}},    {"0x10", {}},        {"+-1", {}},          {"0.3 5", {}},  {"@Variant(\\0\\0)", {}},
    };
    for (const auto& [text, value] : expected) {
        put("[General]\nzofra_radio_volume=" + text + "\n");
        EXPECT_EQ(open()->floatValue(volumeKey), value) << text.toStdString();
    }
}

TEST_F(IniDefaultsStoreTest, writesThePointInEveryLocale) {
    const QTemporaryDir locales;
    if (test::runProgram(QStringLiteral("localedef"),
                         {QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"),
                          QStringLiteral("UTF-8"), locales.filePath(QStringLiteral("comma"))}) != 0)
        GTEST_SKIP() << "skipped: the package locales is not installed";
    test::ScopedEnvironment environment;
    environment.set("LOCPATH", locales.path().toUtf8());
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    ASSERT_TRUE(std::setlocale(LC_NUMERIC, "comma"));
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    open()->setFloat(volumeKey, 0.5F);
    EXPECT_EQ(open()->floatValue(volumeKey), 0.5F);
    EXPECT_TRUE(content().contains("=0.5\n"));
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST_F(IniDefaultsStoreTest, keepsUnknownKeysCommentsAndNonsense) {
    put("; hello\n[General]\nmine=1\nzofra_radio_volume=0.5\nnonsense here\n\n[Window]\nx=3\n");
    open()->setFloat(volumeKey, 0.25F);
    EXPECT_EQ(content(),
              "; hello\n[General]\nmine=1\nzofra_radio_volume=0.25\nnonsense here\n\n[Window]\nx=3\n");
}

TEST_F(IniDefaultsStoreTest, keepsADamagedFileAsACopyAndWhatCanBeReadInPlace) {
    const QByteArray damaged("\x00\x01\xFF garbage\n[unfinished\n=x\nmine=1\napp_language=\xFF\xFE\n; k\xFC"
                             "che\n",
                             58);
    put(damaged);
    const auto store = open();
    EXPECT_EQ(store->string(stationKey), std::nullopt);
    EXPECT_TRUE(lines.empty()) << "reading changes nothing";
    store->setString(stationKey, QStringLiteral("joe"));
    EXPECT_EQ(content(), "[unfinished\n=x\nmine=1\n; k\xFC"
                         "che\n[General]\nzofra_selected_station=joe\n");
    EXPECT_EQ(copy(), damaged);
    EXPECT_EQ(onlyLine(), QStringLiteral("Settings in FILE were damaged: what was there is kept in "
                                         "FILE.damaged"));
    store->setString(stationKey, QStringLiteral("qmusic"));
    EXPECT_EQ(lines.size(), 1U) << "it is sound now";
}

TEST_F(IniDefaultsStoreTest, keepsEachDamagedFileUnderANameOfItsOwn) {
    const auto damage = [this](const QByteArray& bytes) {
        put(bytes);
        open()->setString(stationKey, QStringLiteral("joe"));
    };
    damage("first\x01\n");
    damage("second\x01\n");
    damage("first\x01\n");
    EXPECT_EQ(copy(), "first\x01\n");
    EXPECT_EQ(copy(QStringLiteral("-2")), "second\x01\n");
    EXPECT_EQ(copy(QStringLiteral("-3")), "(no file)") << "the same bytes are kept once";
    for (int i = 3; i <= 9; ++i)
        damage("number " + QByteArray::number(i) + "\x01\n");
    lines.clear();
    damage("one too many\x01\n");
    EXPECT_EQ(content(), "one too many\x01\n") << "what cannot be kept is not written over";
    EXPECT_TRUE(onlyLine().contains(QStringLiteral("too many copies")));
}

TEST_F(IniDefaultsStoreTest, leavesADamagedFileAloneWhereNoCopyCanBeKept) {
    const QByteArray damaged = "\x01" + QByteArray(300, 'x') + "\n";
    put(damaged);
    const auto store = open();
    rlimit kept{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &kept), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100, kept.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    store->setFloat(volumeKey, 0.25F);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &kept), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(content(), damaged);
    EXPECT_EQ(copy(), "(no file)") << "no half copy either";
    EXPECT_EQ(store->floatValue(volumeKey), 0.25F);
    EXPECT_TRUE(onlyLine().contains(QStringLiteral("no copy of it can be kept: File too large")));
}

TEST_F(IniDefaultsStoreTest, takesANumberOutsideItsRangeForNone) {
    for (const auto& [text, value] : std::vector<std::pair<QByteArray, std::optional<float>>>{
             {"7.5", {}}, {"-0.1", {}}, {"1.0001", {}}, {"3e38", {}}, {"1", 1.0F}, {"0", 0.0F}}) {
        put("[General]\nzofra_radio_volume=" + text + "\nother=" + text + "\n");
        const IniDefaultsStore store(path, pool, [](const QString&) {},
                                     {.lockWait = 0ms, .ranges = {{volumeKey, 0.0F, 1.0F}}});
        EXPECT_EQ(store.floatValue(volumeKey), value) << text.toStdString();
        EXPECT_EQ(store.floatValue(QStringLiteral("other")), text.toFloat()) << "no range is known for it";
    }
}

TEST_F(IniDefaultsStoreTest, losesNoKeyWhenTwoProgramsWrite) {
    const auto first = open();
    const auto second = open();
    first->setString(stationKey, QStringLiteral("joe"));
    second->setFloat(volumeKey, 0.5F);
    first->setString(QStringLiteral("app_language"), QStringLiteral("nl"));
    second->setFloat(volumeKey, 0.25F);
    EXPECT_EQ(content(), "[General]\nzofra_selected_station=joe\nzofra_radio_volume=0.25\napp_language=nl\n");
    // Each knows its own, and what the other had written before it last wrote itself.
    EXPECT_EQ(first->string(stationKey), QStringLiteral("joe"));
    EXPECT_EQ(second->string(QStringLiteral("app_language")), QStringLiteral("nl"));
}

TEST_F(IniDefaultsStoreTest, losesNoKeyWhenManyThreadsWriteThroughManyStores) {
    test::ManualMainQueue mainQueue;
    ThreadTaskPool threads(mainQueue);
    std::mutex mutex;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 4; ++writer) {
        writers.emplace_back([&, writer] {
            IniDefaultsStore store(path, threads,
                                   [&](const QString& line) {
                                       const std::scoped_lock lock(mutex);
                                       lines.push_back(line);
                                   },
                                   {.lockWait = 10s, .ranges = {}});
            for (int i = 0; i < 25; ++i)
                store.setString(QStringLiteral("w%1_%2").arg(writer).arg(i), QString::number(i));
            EXPECT_TRUE(store.flush(30s));
        });
    }
    for (auto& writer : writers)
        writer.join();
    EXPECT_TRUE(lines.empty());
    const auto store = open();
    for (int writer = 0; writer < 4; ++writer) {
        for (int i = 0; i < 25; ++i)
            EXPECT_EQ(store->string(QStringLiteral("w%1_%2").arg(writer).arg(i)), QString::number(i));
    }
}

TEST_F(IniDefaultsStoreTest, writesOnceForManyChangesInARow) {
    const auto store = open(later);
    for (int i = 0; i <= 100; ++i)
        store->setFloat(volumeKey, static_cast<float>(i) / 100);
    EXPECT_EQ(later.waiting(), 1U);
    EXPECT_EQ(store->floatValue(volumeKey), 1.0F) << "readable before it is written";
    EXPECT_FALSE(store->flush(0ms));
    later.runAll();
    EXPECT_TRUE(store->flush(0ms));
    EXPECT_EQ(content(), "[General]\nzofra_radio_volume=1\n");
}

TEST_F(IniDefaultsStoreTest, writesOnAfterTheStoreHasEnded) {
    open(later)->setString(stationKey, QStringLiteral("joe"));
    later.runAll();
    EXPECT_EQ(content(), "[General]\nzofra_selected_station=joe\n");
}

TEST_F(IniDefaultsStoreTest, goesOnWhereAFolderIsInTheFilesPlace) {
    QDir().mkpath(path);
    const auto store = open();
    EXPECT_EQ(onlyLine(),
              QStringLiteral("Settings cannot be read from FILE: Is a directory; nothing stored there is "
                             "used or changed"));
    store->setFloat(volumeKey, 0.5F);
    EXPECT_EQ(store->floatValue(volumeKey), 0.5F);
    EXPECT_EQ(lines.size(), 1U) << "told once";
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(IniDefaultsStoreTest, goesOnWhereItsFolderIsAFile) {
    QDir().mkpath(folder.filePath(QStringLiteral("config")));
    QFile blocker(folder.filePath(QStringLiteral("config/zofrazofra")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    const auto store = open();
    store->setString(stationKey, QStringLiteral("joe"));
    store->setString(stationKey, QStringLiteral("qmusic"));
    EXPECT_EQ(store->string(stationKey), QStringLiteral("qmusic"));
    EXPECT_EQ(onlyLine(),
              QStringLiteral("Settings cannot be read from FILE: Not a directory; nothing stored there is "
                             "used or changed"));
    // The obstacle is gone: the next write brings along what could not be written before.
    ASSERT_TRUE(blocker.remove());
    store->setFloat(volumeKey, 0.5F);
    EXPECT_EQ(content(), "[General]\nzofra_radio_volume=0.5\nzofra_selected_station=qmusic\n");
}

TEST_F(IniDefaultsStoreTest, respectsAReadOnlyFile) {
    put("[General]\nzofra_radio_volume=0.5\n");
    ASSERT_EQ(chmod(path.toUtf8().constData(), 0444), 0);
    const auto store = open();
    store->setFloat(volumeKey, 0.25F);
    EXPECT_EQ(store->floatValue(volumeKey), 0.25F);
    EXPECT_EQ(content(), "[General]\nzofra_radio_volume=0.5\n");
    EXPECT_EQ(onlyLine(),
              QStringLiteral("Settings cannot be written to FILE: it is read-only; changes last until the "
                             "program ends"));
}

TEST_F(IniDefaultsStoreTest, keepsTheFilesMode) {
    put("");
    ASSERT_EQ(chmod(path.toUtf8().constData(), 0640), 0);
    open()->setFloat(volumeKey, 0.25F);
    struct stat status {};
    ASSERT_EQ(stat(path.toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(IniDefaultsStoreTest, followsALink) {
    const auto target = folder.filePath(QStringLiteral("dotfiles.ini"));
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(QFile::link(target, path));
    open()->setFloat(volumeKey, 0.25F);
    open()->setString(stationKey, QStringLiteral("joe"));
    EXPECT_TRUE(QFileInfo(path).isSymLink());
    EXPECT_TRUE(QFileInfo(target).isFile());
    EXPECT_EQ(content(), "[General]\nzofra_radio_volume=0.25\nzofra_selected_station=joe\n");
}

TEST_F(IniDefaultsStoreTest, losesNothingWhenTheDiskIsFull) {
    const QByteArray before = "[General]\n" + QByteArray(200, ';') + "\nzofra_radio_volume=0.5\n";
    put(before);
    const auto store = open();
    // A limit on the size of files stops the write in its middle as a full disk does.
    rlimit kept{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &kept), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100, kept.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    store->setFloat(volumeKey, 0.25F);
    store->setString(stationKey, QStringLiteral("joe"));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &kept), 0);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(content(), before);
    EXPECT_EQ(store->floatValue(volumeKey), 0.25F);
    EXPECT_EQ(store->string(stationKey), QStringLiteral("joe"));
    EXPECT_EQ(onlyLine(),
              QStringLiteral("Settings cannot be written to FILE: File too large; changes last until the "
                             "program ends"));
    EXPECT_EQ(QDir(QFileInfo(path).path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("zofrazofra.ini")})
        << "no half file is left";

    // There is room again: at the end of the program it is written after all.
    EXPECT_TRUE(store->flush(0ms));
    EXPECT_EQ(open()->floatValue(volumeKey), 0.25F);
    EXPECT_EQ(open()->string(stationKey), QStringLiteral("joe"));
}

TEST_F(IniDefaultsStoreTest, leavesAloneWhatSaysItAlready) {
    const auto store = open();
    store->setString(stationKey, QStringLiteral("joe"));
    struct stat before {};
    ASSERT_EQ(stat(path.toUtf8().constData(), &before), 0);
    store->setString(stationKey, QStringLiteral("joe"));
    open()->setString(stationKey, QStringLiteral("joe"));
    struct stat after {};
    ASSERT_EQ(stat(path.toUtf8().constData(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino) << "the same file, not one in its place";
    EXPECT_EQ(QDir(QFileInfo(path).path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("zofrazofra.ini")})
        << "and no lock is left";
    // What somebody else wrote there meanwhile is another text.
    put("[General]\nzofra_selected_station=qmusic\n");
    store->setString(stationKey, QStringLiteral("joe"));
    EXPECT_EQ(content(), "[General]\nzofra_selected_station=joe\n");
}

TEST_F(IniDefaultsStoreTest, neverWritesWhatItCannotRead) {
    const auto store = open();
    store->setString(stationKey, QStringLiteral("joe"));
    const QByteArray endless(2 << 20, 'x');
    store->setData(QStringLiteral("cached_sonos_rooms"), endless);
    EXPECT_EQ(store->data(QStringLiteral("cached_sonos_rooms")), endless);
    EXPECT_EQ(onlyLine(),
              QStringLiteral("Settings cannot be written to FILE: cached_sonos_rooms is too long; it "
                             "lasts until the program ends"));
    store->setFloat(volumeKey, 0.5F);
    EXPECT_EQ(content(), "[General]\nzofra_selected_station=joe\nzofra_radio_volume=0.5\n");
}

TEST_F(IniDefaultsStoreTest, keepsTheOtherKeysOfAFileThatHasGrownTooLarge) {
    const QByteArray grown = "[General]\nzofra_selected_station=joe\ncached_sonos_rooms=[\"" +
                             QByteArray(23 << 20, 'x') + "\"]\nzofra_radio_volume=0.25\n";
    put(grown);
    const auto store = open();
    EXPECT_EQ(store->string(stationKey), QStringLiteral("joe"));
    EXPECT_EQ(store->floatValue(volumeKey), 0.25F);
    store->setFloat(volumeKey, 0.5F);
    EXPECT_EQ(content(), "[General]\nzofra_selected_station=joe\nzofra_radio_volume=0.5\n");
    EXPECT_EQ(copy(), grown);
    EXPECT_EQ(open()->string(stationKey), QStringLiteral("joe"));
}

TEST_F(IniDefaultsStoreTest, opensNothingButAFile) {
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_EQ(mkfifo(path.toUtf8().constData(), 0600), 0);
    const auto store = open();
    store->setFloat(volumeKey, 0.5F);
    EXPECT_EQ(store->floatValue(volumeKey), 0.5F);
    EXPECT_EQ(onlyLine(),
              QStringLiteral("Settings cannot be read from FILE: Not a regular file; nothing stored "
                             "there is used or changed"));
}

TEST_F(IniDefaultsStoreTest, givesUpOnALockThatIsNeverReleased) {
    put("[General]\n");
    QLockFile lock(QFileInfo(path).path() + QStringLiteral("/.zofrazofra.ini.lock"));
    ASSERT_TRUE(lock.tryLock());
    const auto store = open();
    store->setString(stationKey, QStringLiteral("joe"));
    EXPECT_EQ(onlyLine(),
              QStringLiteral("Settings cannot be written to FILE: another program holds its lock; changes "
                             "last until the program ends"));
    EXPECT_EQ(content(), "[General]\n");
    lock.unlock();
    EXPECT_TRUE(store->flush(0ms));
    EXPECT_EQ(content(), "[General]\nzofra_selected_station=joe\n");
}

TEST_F(IniDefaultsStoreTest, tellsAgainAfterItHadGoneWell) {
    QDir().mkpath(path);
    const auto store = open();
    store->setFloat(volumeKey, 0.1F);
    ASSERT_EQ(lines.size(), 1U);
    ASSERT_TRUE(QDir().rmdir(path));
    store->setFloat(volumeKey, 0.2F);
    ASSERT_TRUE(QFile::remove(path));
    QDir().mkpath(path);
    store->setFloat(volumeKey, 0.3F);
    EXPECT_EQ(lines.size(), 2U);
}

TEST_F(IniDefaultsStoreTest, reportsToTheLog) {
    test::RecordingSystemLog log;
    testing::internal::CaptureStderr();
    IniDefaultsStore::reportTo(log)(QStringLiteral("Settings cannot be read"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "zofrazofra: Settings cannot be read\n");
    EXPECT_EQ(log.lines, std::vector<QString>{QStringLiteral("Settings cannot be read")});
}

TEST_F(IniDefaultsStoreTest, livesInTheUsersConfiguration) {
    test::ScopedEnvironment environment;
    environment.set("XDG_CONFIG_HOME", "/some/where");
    EXPECT_EQ(IniDefaultsStore::defaultPath(), QStringLiteral("/some/where/zofrazofra/zofrazofra.ini"));
}

} // namespace
} // namespace zofra
