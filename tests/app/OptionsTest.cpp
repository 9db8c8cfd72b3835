// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

#include "app/OptionTable.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

Options parsed(const QStringList& arguments) {
    const auto result = parseOptions(arguments);
    if (!result) {
        ADD_FAILURE() << result.error().toStdString();
        return {};
    }
    return *result;
}

QString refused(const QStringList& arguments) {
    const auto result = parseOptions(arguments);
    if (result) {
        ADD_FAILURE() << "accepted: " << arguments.join(u' ').toStdString();
        return {};
    }
    EXPECT_FALSE(result.error().contains(u'\n')) << "one line";
    return result.error();
}

TEST(OptionsTest, NoneIsAPlainStart) {
    const Options options = parsed({});
    EXPECT_EQ(options.task, Options::Task::run);
    EXPECT_FALSE(options.acts());
    EXPECT_FALSE(options.needsRunning());
    EXPECT_EQ(options.output, std::nullopt);
    EXPECT_TRUE(options.firstStartOnly().isEmpty());
}

TEST(OptionsTest, PlayTakesAStationOrNone) {
    EXPECT_EQ(parsed({u"--play"_qs}).playback, Options::Playback::play);
    EXPECT_EQ(parsed({u"--play"_qs}).station, std::nullopt);
    EXPECT_EQ(parsed({u"--play"_qs, u"qmusic"_qs}).station, RadioStation(RadioStation::qmusic));
    EXPECT_EQ(parsed({u"--play=joe"_qs}).station, RadioStation(RadioStation::joe));
    const Options followed = parsed({u"--play"_qs, u"--output"_qs, u"here"_qs});
    EXPECT_EQ(followed.station, std::nullopt);
    EXPECT_EQ(followed.output, u"here"_qs);
    EXPECT_TRUE(refused({u"--play"_qs, u"nonsense"_qs}).contains(u"\"nonsense\""_qs));
    EXPECT_FALSE(refused({u"--play="_qs}).isEmpty());
}

TEST(OptionsTest, StationsAreNamedByRawValueOrUnambiguousName) {
    EXPECT_EQ(stationNamed(u"zofra"_qs), RadioStation(RadioStation::zofra));
    EXPECT_EQ(stationNamed(u"zofra_class_x"_qs), RadioStation(RadioStation::zofraClassX));
    EXPECT_EQ(stationNamed(u"ZOFRA CLASS X"_qs), RadioStation(RadioStation::zofraClassX));
    EXPECT_EQ(stationNamed(u"Zofra"_qs), RadioStation(RadioStation::zofra))
        << "a whole name before a beginning";
    EXPECT_EQ(stationNamed(u"joe"_qs), RadioStation(RadioStation::joe));
    EXPECT_EQ(stationNamed(u"Joe"_qs), RadioStation(RadioStation::joe));
    EXPECT_EQ(stationNamed(u"inside"_qs), RadioStation(RadioStation::insideRadio));
    EXPECT_EQ(stationNamed(u"sud radio h"_qs), RadioStation(RadioStation::sudRadioHainaut));
    EXPECT_EQ(stationNamed(u"sud"_qs), std::nullopt) << "two begin like this";
    EXPECT_EQ(stationNamed(QString()), std::nullopt);
}

TEST(OptionsTest, OutputAndEndpointsNeedAValue) {
    EXPECT_EQ(parsed({u"--output"_qs, u"Living Room"_qs}).output, u"Living Room"_qs);
    EXPECT_EQ(parsed({u"--output=everywhere"_qs}).output, u"everywhere"_qs);
    EXPECT_EQ(parsed({u"--endpoints"_qs, u"/tmp/e.ini"_qs}).endpointsFile, u"/tmp/e.ini"_qs);
    for (const QString& name : {u"--output"_qs, u"--endpoints"_qs}) {
        EXPECT_EQ(refused({name}), name + u" needs a value"_qs);
        EXPECT_EQ(refused({name, u"--headless"_qs}), name + u" needs a value"_qs);
        EXPECT_EQ(refused({name + u'='}), name + u" needs a value"_qs);
    }
}

TEST(OptionsTest, KnowsWhatOnlyAFirstStartUnderstands) {
    const Options options = parsed({u"--headless"_qs, u"--no-discovery"_qs, u"--endpoints=x"_qs});
    EXPECT_TRUE(options.headless);
    EXPECT_TRUE(options.noDiscovery);
    EXPECT_EQ(options.firstStartOnly(),
              (QStringList{u"--endpoints"_qs, u"--no-discovery"_qs, u"--headless"_qs}));
}

TEST(OptionsTest, AsksForOneThing) {
    EXPECT_EQ(parsed({u"--help"_qs}).task, Options::Task::help);
    EXPECT_EQ(parsed({u"-h"_qs}).task, Options::Task::help);
    EXPECT_EQ(parsed({u"--version"_qs}).task, Options::Task::version);
    EXPECT_EQ(parsed({u"--quit"_qs}).task, Options::Task::quit);
    EXPECT_EQ(parsed({u"--status"_qs}).task, Options::Task::status);
    EXPECT_FALSE(parsed({u"--status"_qs}).isJson);
    for (const QString& name : {u"--status"_qs, u"--follow"_qs, u"--history"_qs, u"--doctor"_qs}) {
        EXPECT_TRUE(parsed({name, u"--json"_qs}).isJson);
        EXPECT_TRUE(parsed({u"--json"_qs, name}).isJson);
    }
    EXPECT_EQ(parsed({u"--quit"_qs, u"--help"_qs}).task, Options::Task::help);
    EXPECT_FALSE(refused({u"--quit"_qs, u"--status"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--json"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--json"_qs, u"--quit"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--quit"_qs, u"--play"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--status"_qs, u"--headless"_qs}).isEmpty());
}

TEST(OptionsTest, TheDoctorGoesWithWhatItLooksAt) {
    EXPECT_EQ(parsed({u"--doctor"_qs}).task, Options::Task::doctor);
    EXPECT_EQ(parsed({u"--doctor"_qs, u"--json"_qs}).task, Options::Task::doctor);
    const Options options =
        parsed({u"--doctor"_qs, u"--endpoints=x"_qs, u"--no-discovery"_qs, u"--headless"_qs});
    EXPECT_EQ(options.endpointsFile, u"x"_qs);
    EXPECT_TRUE(options.noDiscovery);
    EXPECT_TRUE(options.headless);
    EXPECT_EQ(parsed({u"--doctor"_qs, u"--help"_qs}).task, Options::Task::help);
    for (const QStringList& other :
         {QStringList{u"--play"_qs}, QStringList{u"--output"_qs, u"here"_qs}, QStringList{u"--quit"_qs},
          QStringList{u"--status"_qs}, QStringList{u"--status"_qs, u"--json"_qs},
          QStringList{u"--version"_qs}}) {
        EXPECT_FALSE(refused(QStringList{u"--doctor"_qs} + other).isEmpty());
        EXPECT_FALSE(refused(other + QStringList{u"--doctor"_qs}).isEmpty());
    }
}

TEST(OptionsTest, RefusesWhatItDoesNotKnow) {
    EXPECT_TRUE(refused({u"--nonsense"_qs}).contains(u"--nonsense"_qs));
    EXPECT_TRUE(refused({u"qmusic"_qs}).contains(u"qmusic"_qs));
    EXPECT_TRUE(refused({u"--headless=yes"_qs}).contains(u"takes no value"_qs));
    EXPECT_FALSE(refused({QString()}).isEmpty());
    EXPECT_TRUE(refused({u"--first"_qs, u"--second"_qs}).contains(u"--first"_qs))
        << "the first mistake is told";
}

TEST(OptionsTest, ActsOnARunningProgram) {
    using Playback = Options::Playback;
    EXPECT_EQ(parsed({u"--stop"_qs}).playback, Playback::stop);
    EXPECT_EQ(parsed({u"--toggle"_qs}).playback, Playback::toggle);
    EXPECT_EQ(parsed({u"--station"_qs, u"next"_qs}).stationStep, Options::StationStep::next);
    EXPECT_EQ(parsed({u"--station=previous"_qs}).stationStep, Options::StationStep::previous);
    EXPECT_EQ(parsed({u"--station"_qs, u"joe"_qs}).station, RadioStation(RadioStation::joe));
    EXPECT_EQ(parsed({u"--notify"_qs, u"off"_qs}).notify, false);
    EXPECT_TRUE(parsed({u"--station"_qs, u"joe"_qs}).needsRunning());
    EXPECT_FALSE(parsed({u"--station"_qs, u"joe"_qs, u"--play"_qs}).needsRunning());
    EXPECT_FALSE(parsed({u"--volume"_qs, u"30"_qs, u"--headless"_qs}).needsRunning());
    EXPECT_TRUE(refused({u"--play"_qs, u"--stop"_qs}).contains(u"--toggle"_qs));
    EXPECT_TRUE(refused({u"--notify"_qs, u"maybe"_qs}).contains(u"\"maybe\""_qs));
    EXPECT_FALSE(refused({u"--status"_qs, u"--stop"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--station"_qs, u"nonsense"_qs}).isEmpty());
}

TEST(OptionsTest, AVolumeIsSetOrChanged) {
    using Volume = Options::Volume;
    EXPECT_EQ(parsed({u"--volume"_qs, u"40"_qs}).volume, (Volume{Volume::Kind::absolute, 40}));
    EXPECT_EQ(parsed({u"--volume"_qs, u"-5"_qs}).volume, (Volume{Volume::Kind::change, -5}));
    EXPECT_EQ(parsed({u"--volume=+10%"_qs}).volume, (Volume{Volume::Kind::change, 10}));
    EXPECT_EQ(parsed({u"--volume=-0"_qs}).volume, (Volume{Volume::Kind::change, 0}));
    for (const QString& wrong : {u"101"_qs, u"loud"_qs, u"5.5"_qs, u"+-5"_qs, u"-101"_qs, u" 5"_qs})
        EXPECT_TRUE(refused({u"--volume="_qs + wrong}).contains(wrong));
}

TEST(OptionsTest, ATimeIsWrittenAsPeopleSayIt) {
    using namespace std::chrono_literals;
    EXPECT_EQ(durationNamed(u"45m"_qs), 45min);
    EXPECT_EQ(durationNamed(u"45"_qs), 45min);
    EXPECT_EQ(durationNamed(u"1h30m"_qs), 90min);
    EXPECT_EQ(durationNamed(u"1h30"_qs), 90min);
    EXPECT_EQ(durationNamed(u"90s"_qs), 90s);
    EXPECT_EQ(durationNamed(u"1m30s"_qs), 90s);
    EXPECT_EQ(durationNamed(u"24h"_qs), 24h);
    EXPECT_EQ(durationNamed(u"off"_qs), 0s);
    for (const QString& wrong :
         {u""_qs, u"0"_qs, u"h"_qs, u"25h"_qs, u"-5m"_qs, u"5 m"_qs, u"m5"_qs, u"soon"_qs})
        EXPECT_EQ(durationNamed(wrong), std::nullopt) << wrong.toStdString();
}

TEST(OptionsTest, AnswersInTheLanguageOfTheTerminal) {
    const auto dutch = parseOptions({u"--nonsense"_qs}, AppLanguage::nl);
    ASSERT_FALSE(dutch);
    EXPECT_EQ(dutch.error(), u"onbekende optie --nonsense (zie --help)"_qs);
    EXPECT_EQ(parseOptions({}, AppLanguage::de)->language, AppLanguage::de);
}

TEST(OptionTableTest, HelpNamesEveryOptionAndStationInEachLanguage) {
    for (const AppLanguage language : allAppLanguages) {
        const QString help = helpText(language);
        for (const OptionRow& row : optionTable()) {
            EXPECT_TRUE(help.contains(row.usage())) << row.name.data();
            EXPECT_TRUE(help.simplified().contains(row.help.in(language).simplified())) << row.name.data();
        }
        EXPECT_TRUE(help.contains(stationNames().join(u", "_qs)));
    }
}

TEST(OptionTableTest, EveryOptionIsReadAsTheTableSays) {
    for (const OptionRow& row : optionTable()) {
        const auto bare = parseOptions({row.name});
        if (row.takes() == OptionRow::Takes::value) {
            EXPECT_EQ(bare.error(), row.name + u" needs a value"_qs);
        } else if (row.name != QLatin1String("--json")) {
            EXPECT_TRUE(bare.has_value()) << row.name.data();
        }
        if (row.takes() == OptionRow::Takes::nothing) {
            EXPECT_EQ(parseOptions({row.name + u"=x"_qs}).error(), row.name + u" takes no value"_qs);
        }
    }
}

TEST(OptionPagesTest, NameEveryOption) {
    for (const OptionRow& row : optionTable()) {
        const QString name = row.name;
        EXPECT_TRUE(bashCompletion().contains(name)) << row.name.data();
        EXPECT_TRUE(zshCompletion().contains(u"'"_qs + name + u"["_qs)) << row.name.data();
        EXPECT_TRUE(fishCompletion().contains(u" -l "_qs + name.mid(2) + u" "_qs)) << row.name.data();
        EXPECT_TRUE(manualOptions().contains(u"\n.B "_qs + QString(name).replace(u'-', u"\\-"_qs)))
            << row.name.data();
    }
}

} // namespace
} // namespace zofra
