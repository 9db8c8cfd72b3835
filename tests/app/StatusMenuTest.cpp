// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/DBusMenuTree.h"
#include "platform/linux/tray/WidgetMenu.h"
#include "tests/app/DelegateTest.h"
#include "tests/app/MenuDump.h"

#include <QFile>

#include <array>
#include <functional>

namespace zofra::test {
namespace {

class NoIcons final : public IconProvider {
public:
    QImage image(const QString&, int, const QColor&) const override { return {}; }
};

/// One way the world can be.
struct Situation {
    QString name;
    std::function<void()> set;
};

class StatusMenuTest : public DelegateTest {
protected:
    void SetUp() override {
        launch();
        delegate->viewModel().onUpdate(u"Channel Zero – Black Fuel"_qs, std::nullopt);
    }

    [[nodiscard]] static const MenuItem* find(const Menu& menu, const QString& actionName) {
        for (const MenuItem& item : menu) {
            if (item.actionName == actionName)
                return &item;
        }
        return nullptr;
    }
    [[nodiscard]] Menu outputs() { return delegate->contextMenu().at(2).submenu; }
    [[nodiscard]] Menu volumes() { return delegate->contextMenu().at(3).submenu; }

    void reset() {
        sonos->rooms = QList<SonosRoom>();
        sonos->activeTarget = AudioOutputTarget::localMac();
        sonos->isScanning = false;
        sonos->localNetworkDenied = false;
        sonos->isSonosPlaying = false;
        player->volume = 0.8F;
        delegate->viewModel().onUpdate(u"Channel Zero – Black Fuel"_qs, std::nullopt);
    }
    [[nodiscard]] QList<SonosRoom> sameNames() const {
        return {room(u"RINCON_1"_qs, u"Kitchen"_qs, 5), room(u"RINCON_2"_qs, u"Kitchen"_qs, 6, true),
                room(u"RINCON_3"_qs, u"Living Room"_qs, 7), room(u"RINCON_4"_qs, u"Living Room"_qs, 8)};
    }
    [[nodiscard]] std::vector<Situation> roomSituations() {
        return {{u"no rooms"_qs, [] {}},
                {u"denied while scanning"_qs,
                 [this] {
                     sonos->localNetworkDenied = true;
                     sonos->isScanning = true;
                 }},
                {u"scanning"_qs, [this] { sonos->isScanning = true; }},
                {u"rooms of the same name, one chosen and playing"_qs,
                 [this] {
                     sonos->rooms = sameNames();
                     sonos->activeTarget = AudioOutputTarget::sonos(u"RINCON_2"_qs);
                     sonos->isSonosPlaying = true;
                 }},
                {u"everywhere"_qs, [this] {
                     sonos->rooms = sameNames();
                     sonos->activeTarget = AudioOutputTarget::sonosEverywhere();
                 }}};
    }
    [[nodiscard]] std::vector<Situation> nextSituations() {
        const auto next = [this](const std::optional<QString>& text) {
            return [this, text] { delegate->viewModel().onUpdate(u"Channel Zero – Black Fuel"_qs, text); };
        };
        return {{u"up next absent"_qs, next(std::nullopt)},
                {u"up next empty"_qs, next(QString())},
                {u"up next present"_qs, next(u"Millionaire – Champagne"_qs)}};
    }
    [[nodiscard]] std::vector<Situation> volumeSituations() {
        std::vector<Situation> situations;
        for (const float volume : {0.0F, 0.25F, 0.5F, 0.62F, 0.8F, 1.0F})
            situations.push_back(
                {u"volume %1"_qs.arg(double(volume)), [this, volume] { player->volume = volume; }});
        return situations;
    }
};

TEST_F(StatusMenuTest, MatchesTheGoldenTreesInFourLanguages) {
    const bool update = qEnvironmentVariableIsSet("ZOFRA_UPDATE_GOLDEN");
    for (const AppLanguage language : allAppLanguages) {
        languages->setCurrentLanguage(language);
        QString trees;
        for (const auto& situations : {roomSituations(), nextSituations(), volumeSituations()}) {
            for (const Situation& situation : situations) {
                reset();
                situation.set();
                trees +=
                    u"== %1\n"_qs.arg(situation.name) + dump(delegate->contextMenu(), Detail::model) + u'\n';
            }
        }
        QFile file(QStringLiteral(ZOFRA_SOURCE_DIR "/tests/app/golden/menu-%1.txt").arg(rawValue(language)));
        if (update) {
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(trees.toUtf8());
            continue;
        }
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        const QStringList expected = QString::fromUtf8(file.readAll()).split(u'\n');
        const QStringList actual = trees.split(u'\n');
        for (qsizetype i = 0; i < std::max(expected.size(), actual.size()); ++i)
            ASSERT_EQ(actual.value(i), expected.value(i))
                << rawValue(language).toStdString() << " line " << i + 1;
    }
}

TEST_F(StatusMenuTest, BothWaysOfShowingGiveTheSameTreesAsTheModel) {
    const NoIcons icons;
    int compared = 0;
    for (const AppLanguage language : allAppLanguages) {
        languages->setCurrentLanguage(language);
        for (const Situation& rooms : roomSituations()) {
            for (const Situation& next : nextSituations()) {
                for (const Situation& volume : volumeSituations()) {
                    reset();
                    rooms.set();
                    next.set();
                    volume.set();
                    const Menu menu = delegate->contextMenu();
                    const QString expected = dump(menu, Detail::shown);
                    DBusMenuTree tree({});
                    static_cast<void>(tree.replace(menu));
                    ASSERT_EQ(dump(*tree.layout(0, -1, {})), expected);
                    const WidgetMenu widget(menu, icons);
                    ASSERT_EQ(dump(widget), expected);
                    ++compared;
                }
            }
        }
    }
    EXPECT_EQ(compared, 4 * 5 * 3 * 6);
}

TEST_F(StatusMenuTest, WithoutRoomsTheDenialAloneBringsThePermissionItem) {
    EXPECT_EQ(outputs().at(2).title, u"No Sonos or Zofra devices found"_qs);
    EXPECT_FALSE(outputs().at(2).isEnabled);
    EXPECT_EQ(find(outputs(), u"openLocalNetworkSettings"_qs), nullptr);
    sonos->localNetworkDenied = true;
    EXPECT_EQ(outputs().at(2).title, u"No access to local network"_qs);
    ASSERT_NE(find(outputs(), u"openLocalNetworkSettings"_qs), nullptr);
    sonos->rooms = sameNames();
    EXPECT_EQ(find(outputs(), u"openLocalNetworkSettings"_qs), nullptr) << "rooms there are";
}

TEST_F(StatusMenuTest, NoTwoVolumesAreEverChecked) {
    int unchecked = 0;
    for (int thousandth = 0; thousandth <= 1000; ++thousandth) {
        player->volume = static_cast<float>(thousandth) / 1000.0F;
        int checked = 0;
        for (const MenuItem& item : volumes())
            checked += item.state == MenuItem::CheckState::on ? 1 : 0;
        ASSERT_LE(checked, 1) << thousandth;
        unchecked += checked == 0 ? 1 : 0;
    }
    EXPECT_GT(unchecked, 0);
    player->volume = 0.8F;
    EXPECT_EQ(volumes().at(1).state, MenuItem::CheckState::on);
    player->volume = 0.62F;
    for (const MenuItem& item : volumes())
        EXPECT_EQ(item.state, MenuItem::CheckState::off);
    player->volume = 0.88F;
    EXPECT_EQ(volumes().at(0).state, MenuItem::CheckState::off) << "0.12 away is too far";
}

TEST_F(StatusMenuTest, EveryActionableItemIsEnabledAndDoesSomething) {
    sonos->localNetworkDenied = true;
    const std::function<void(const Menu&)> check = [&check](const Menu& menu) {
        for (const MenuItem& item : menu) {
            if (!item.submenu.empty()) {
                EXPECT_TRUE(item.isEnabled);
                check(item.submenu);
            } else if (!item.isSeparator()) {
                EXPECT_EQ(item.isEnabled, static_cast<bool>(item.action)) << item.title.toStdString();
                EXPECT_EQ(item.isEnabled, !item.actionName.isEmpty()) << item.title.toStdString();
            }
        }
    };
    check(delegate->contextMenu());
}

TEST_F(StatusMenuTest, ItemsActThroughTheirController) {
    const auto choose = [](const Menu& menu, const QString& actionName) {
        const MenuItem* item = find(menu, actionName);
        ASSERT_NE(item, nullptr) << actionName.toStdString();
        item->action(*item);
    };
    choose(delegate->contextMenu(), u"togglePlayRadio"_qs);
    EXPECT_TRUE(player->isPlaying);
    const Menu stations = delegate->contextMenu().at(1).submenu;
    stations.at(1).action(stations.at(1));
    EXPECT_EQ(player->currentStation.get(), RadioStation(RadioStation::qmusic));
    const Menu volume = volumes();
    volume.at(4).action(volume.at(4));
    EXPECT_EQ(player->volume.get(), 0.0F);
    sonos->localNetworkDenied = true;
    choose(outputs(), u"openLocalNetworkSettings"_qs);
    EXPECT_EQ(workspace.opened.size(), 1U);
    sonos->rooms = sameNames();
    choose(outputs(), u"selectOutputSonos"_qs);
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::sonos(u"RINCON_1"_qs));
    choose(outputs(), u"selectOutputEverywhere"_qs);
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::sonosEverywhere());
    choose(outputs(), u"selectOutputMac"_qs);
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::localMac());
    network.addInterface(u"eth0"_qs, u"10.0.0.2"_qs, u"10.0.0.255"_qs);
    choose(outputs(), u"rescanSonos"_qs);
    EXPECT_TRUE(sonos->isScanning);
    choose(delegate->contextMenu(), u"showAboutWindow"_qs);
    queue.drain();
    EXPECT_EQ(windows.made, 1);
    choose(delegate->contextMenu(), u"quit"_qs);
    EXPECT_EQ(record.last(), u"terminate"_qs);
}

TEST_F(StatusMenuTest, TheSameStateGivesTheSameMenu) {
    EXPECT_EQ(dump(delegate->contextMenu(), Detail::model), dump(delegate->contextMenu(), Detail::model));
}

TEST_F(StatusMenuTest, TextsFromTheNetworkAreKeptAsTheyAre) {
    const QString nasty = u"A & B <b>x</b> _y_\n\t\u202E evil \u2066"_qs + QString(4096, u'z');
    delegate->viewModel().onUpdate(nasty, nasty);
    const Menu menu = delegate->contextMenu();
    EXPECT_EQ(menu.at(5).title, u"Now Playing: "_qs + nasty);
    EXPECT_EQ(menu.at(6).title, u"Up Next: "_qs + nasty);
}

} // namespace
} // namespace zofra::test
