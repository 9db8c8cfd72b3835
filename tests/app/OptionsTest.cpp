// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

Options parsed(const QStringList& arguments) {
    const auto result = parseOptions(arguments, AppLanguage::en);
    EXPECT_TRUE(result) << (result ? "" : result.error().toStdString());
    return result.value_or(Options());
}

QString refused(const QStringList& arguments) {
    const auto result = parseOptions(arguments, AppLanguage::en);
    if (result) {
        ADD_FAILURE() << "accepted: " << arguments.join(u' ').toStdString();
        return {};
    }
    EXPECT_FALSE(result.error().contains(u'\n')) << "one line";
    return result.error();
}

TEST(Options, AreRefusedInTheUsersLanguage) {
    EXPECT_EQ(parseOptions({u"--loud"_qs}, AppLanguage::nl).error(),
              u"onbekende optie --loud (zie --help)"_qs);
    EXPECT_EQ(parseOptions({u"--json"_qs}, AppLanguage::fr).error(),
              u"--json va avec --status ou --doctor"_qs);
}

TEST(Options, NoneIsAPlainStart) {
    const Options options = parsed({});
    EXPECT_EQ(options.task, Options::Task::run);
    EXPECT_FALSE(options.play);
    EXPECT_EQ(options.output, std::nullopt);
    EXPECT_TRUE(options.firstStartOnly().isEmpty());
}

TEST(Options, PlayTakesAStationOrNone) {
    EXPECT_TRUE(parsed({u"--play"_qs}).play);
    EXPECT_EQ(parsed({u"--play"_qs}).station, std::nullopt);
    EXPECT_EQ(parsed({u"--play"_qs, u"qmusic"_qs}).station, RadioStation(RadioStation::qmusic));
    EXPECT_EQ(parsed({u"--play=joe"_qs}).station, RadioStation(RadioStation::joe));
    const Options followed = parsed({u"--play"_qs, u"--output"_qs, u"here"_qs});
    EXPECT_EQ(followed.station, std::nullopt);
    EXPECT_EQ(followed.output, u"here"_qs);
    EXPECT_TRUE(refused({u"--play"_qs, u"nonsense"_qs}).contains(u"\"nonsense\""_qs));
    EXPECT_FALSE(refused({u"--play="_qs}).isEmpty());
}

TEST(Options, StationsAreNamedByRawValueOrUnambiguousName) {
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

TEST(Options, OutputAndEndpointsNeedAValue) {
    EXPECT_EQ(parsed({u"--output"_qs, u"Living Room"_qs}).output, u"Living Room"_qs);
    EXPECT_EQ(parsed({u"--output=everywhere"_qs}).output, u"everywhere"_qs);
    EXPECT_EQ(parsed({u"--endpoints"_qs, u"/tmp/e.ini"_qs}).endpointsFile, u"/tmp/e.ini"_qs);
    for (const QString& name : {u"--output"_qs, u"--endpoints"_qs}) {
        EXPECT_EQ(refused({name}), name + u" needs a value"_qs);
        EXPECT_EQ(refused({name, u"--headless"_qs}), name + u" needs a value"_qs);
        EXPECT_EQ(refused({name + u'='}), name + u" needs a value"_qs);
    }
}

TEST(Options, KnowsWhatOnlyAFirstStartUnderstands) {
    const Options options = parsed({u"--headless"_qs, u"--no-discovery"_qs, u"--endpoints=x"_qs});
    EXPECT_TRUE(options.headless);
    EXPECT_TRUE(options.noDiscovery);
    EXPECT_EQ(options.firstStartOnly(),
              (QStringList{u"--endpoints"_qs, u"--no-discovery"_qs, u"--headless"_qs}));
}

TEST(Options, AsksForOneThing) {
    EXPECT_EQ(parsed({u"--help"_qs}).task, Options::Task::help);
    EXPECT_EQ(parsed({u"-h"_qs}).task, Options::Task::help);
    EXPECT_EQ(parsed({u"--version"_qs}).task, Options::Task::version);
    EXPECT_EQ(parsed({u"--quit"_qs}).task, Options::Task::quit);
    EXPECT_EQ(parsed({u"--status"_qs}).task, Options::Task::status);
    EXPECT_EQ(parsed({u"--status"_qs, u"--json"_qs}).task, Options::Task::statusJson);
    EXPECT_EQ(parsed({u"--json"_qs, u"--status"_qs}).task, Options::Task::statusJson);
    EXPECT_EQ(parsed({u"--quit"_qs, u"--help"_qs}).task, Options::Task::help);
    EXPECT_FALSE(refused({u"--quit"_qs, u"--status"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--json"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--json"_qs, u"--quit"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--quit"_qs, u"--play"_qs}).isEmpty());
    EXPECT_FALSE(refused({u"--status"_qs, u"--headless"_qs}).isEmpty());
}

TEST(Options, TheDoctorGoesWithWhatItLooksAt) {
    EXPECT_EQ(parsed({u"--doctor"_qs}).task, Options::Task::doctor);
    EXPECT_EQ(parsed({u"--doctor"_qs, u"--json"_qs}).task, Options::Task::doctorJson);
    EXPECT_EQ(parsed({u"--json"_qs, u"--doctor"_qs}).task, Options::Task::doctorJson);
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

TEST(Options, RefusesWhatItDoesNotKnow) {
    EXPECT_TRUE(refused({u"--nonsense"_qs}).contains(u"--nonsense"_qs));
    EXPECT_TRUE(refused({u"qmusic"_qs}).contains(u"qmusic"_qs));
    EXPECT_TRUE(refused({u"--headless=yes"_qs}).contains(u"takes no value"_qs));
    EXPECT_FALSE(refused({QString()}).isEmpty());
    EXPECT_TRUE(refused({u"--first"_qs, u"--second"_qs}).contains(u"--first"_qs))
        << "the first mistake is told";
}

TEST(Options, HelpNamesEveryOptionAndStation) {
    for (const auto language : allAppLanguages) {
        const QString help = helpText(language);
        for (const QString& word :
             {u"--play"_qs, u"--output"_qs, u"--endpoints"_qs, u"--no-discovery"_qs, u"--headless"_qs,
              u"--status"_qs, u"--json"_qs, u"--doctor"_qs, u"--quit"_qs, u"--version"_qs, u"--help"_qs})
            EXPECT_TRUE(help.contains(word)) << word.toStdString();
        for (const RadioStation station : RadioStation::allCases)
            EXPECT_TRUE(help.contains(station.rawValue()));
        for (const QString& line : help.split(u'\n'))
            EXPECT_TRUE(line.size() <= 92 || line.contains(u"qmusic"_qs)) << line.toStdString();
    }
}

} // namespace
} // namespace zofra
