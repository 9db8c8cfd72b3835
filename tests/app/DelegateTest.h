// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "tests/support/FakeStatusItem.h"
#include "tests/support/World.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zofra::test {

/// "POST Stop 10.0.0.5" (the action of a control request) or "GET host".
[[nodiscard]] inline QString requestLine(const HttpRequest& request) {
    QString action;
    for (const auto& [name, value] : request.headers) {
        if (name.compare("SOAPACTION", Qt::CaseInsensitive) == 0)
            action = QString::fromLatin1(value).section(QLatin1Char('#'), 1).remove(QLatin1Char('"'));
    }
    return QStringList{QString::fromLatin1(request.method), action, request.url.host()}
        .join(QLatin1Char(' '))
        .simplified();
}

/// A window that records what is asked of it; the test closes it as a person would.
class FakePopupWindow final : public PopupWindow {
public:
    FakePopupWindow(QStringList& record, PopupPanelContent panelContent)
        : content(std::move(panelContent))
        , m_record(record) {}
    FakePopupWindow(const FakePopupWindow&) = delete;
    FakePopupWindow& operator=(const FakePopupWindow&) = delete;
    ~FakePopupWindow() override { m_record << QStringLiteral("window gone"); }

    void setTitle(const QString& title) override { m_record << QStringLiteral("window title ") + title; }
    void setStyle(unsigned styleMask) override {
        m_record << QStringLiteral("window style %1").arg(styleMask);
    }
    void center() override { m_record << QStringLiteral("window center"); }
    void makeKeyAndOrderFront() override { m_record << QStringLiteral("window front"); }
    void orderFront() override { m_record << QStringLiteral("window front without keyboard"); }
    [[nodiscard]] bool wasUsed() const override { return used; }
    void close() override {
        m_record << QStringLiteral("window close");
        closeByButton();
    }
    void closeByButton() {
        const auto handler = std::exchange(onWillClose, {});
        if (handler)
            handler(*this);
    }

    PopupPanelContent content;
    bool used = false;

private:
    QStringList& m_record;
};

class FakePopupWindowFactory final : public PopupWindowFactory {
public:
    explicit FakePopupWindowFactory(QStringList& record)
        : m_record(record) {}
    std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent content) override {
        m_record << QStringLiteral("window made");
        auto window = std::make_unique<FakePopupWindow>(m_record, std::move(content));
        last = window.get();
        ++made;
        return window;
    }
    FakePopupWindow* last = nullptr;
    int made = 0;

private:
    QStringList& m_record;
};

class FakeApplication final : public Application {
public:
    explicit FakeApplication(QStringList& record)
        : m_record(record) {}
    void activate(Others others) override {
        m_record << (others == Others::ignore ? QStringLiteral("activate ignoring others")
                                              : QStringLiteral("activate"));
    }
    void terminate() override { m_record << QStringLiteral("terminate"); }

private:
    QStringList& m_record;
};

/// A controller with everything it wires, among fakes that share one record of what happens.
class DelegateTest : public ::testing::Test, protected World {
protected:
    DelegateTest() {
        http.onRequest = [this](const HttpRequest& request) { record << requestLine(request); };
    }

    /// A room of one player at 10.0.0.`host`.
    static SonosRoom room(const QString& id, const QString& name, int host, bool isOwn = false) {
        SonosSpeaker speaker;
        speaker.id = id;
        speaker.ip = QStringLiteral("10.0.0.%1").arg(host);
        speaker.roomName = name;
        speaker.model = isOwn ? QStringLiteral("Zofra Pi Player") : QStringLiteral("One");
        speaker.modelName = speaker.model;
        return {name, speaker, {speaker}};
    }

    /// The delegate, constructed but not launched.
    AppDelegate& make() {
        AppDelegate::Environment environment{defaults,      queue,           output,    hosts,   http,
                                             queue.clock(), sockets.maker(), statusBar, windows, application,
                                             workspace,     bundle,          {},        {},      {}};
        environment.languages = [this]() -> LanguageManager& {
            if (!languages)
                languages = std::make_unique<LanguageManager>(defaults, preferredLanguages);
            return *languages;
        };
        environment.player = [this]() -> RadioPlayer& {
            if (!player)
                player = std::make_unique<RadioPlayer>(RadioPlayer::Environment{
                    players, defaults, queue, nowPlaying, commands, wake, output, hosts});
            return *player;
        };
        environment.sonos = [this]() -> SonosManager& {
            if (!sonos)
                sonos = std::make_unique<SonosManager>(
                    discovers, SonosManager::Environment{
                                   {http, queue, tasks, network, log}, defaults, *languages, *player, hosts});
            return *sonos;
        };
        delegate = std::make_unique<AppDelegate>(std::move(environment));
        return *delegate;
    }
    /// A launched delegate with nothing pending, and an empty record.
    AppDelegate& launch() {
        make().applicationDidFinishLaunching();
        queue.drain();
        record.clear();
        return *delegate;
    }
    [[nodiscard]] FakeStatusItem& item() { return *statusBar.item; }
    /// The record's entries that begin with one of `beginnings`.
    [[nodiscard]] QStringList recorded(const QStringList& beginnings) const {
        QStringList result;
        for (const QString& entry : record) {
            for (const QString& beginning : beginnings) {
                if (entry.startsWith(beginning)) {
                    result << entry;
                    break;
                }
            }
        }
        return result;
    }

    /// One record for all.
    QStringList& record = players.calls;
    FakeStatusBar statusBar{record};
    FakePopupWindowFactory windows{record};
    FakeApplication application{record};
    QVariantMap bundle;
    QStringList preferredLanguages;
    bool discovers = false;

    std::unique_ptr<LanguageManager> languages;
    std::unique_ptr<RadioPlayer> player;
    std::unique_ptr<SonosManager> sonos;
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace zofra::test
