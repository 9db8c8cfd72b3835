// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusItem.h"

#include <QStringList>

#include <memory>
#include <utility>
#include <vector>

namespace zofra::test {

/// A status item that shows nothing and remembers everything, in a record that it may share with other fakes.
class FakeStatusItem final : public StatusItem, public StatusItemButton {
public:
    explicit FakeStatusItem(QStringList& record)
        : m_record(record) {}

    StatusItemButton* button() override { return hasButton ? this : nullptr; }
    void menuDidChange() override { m_record << QStringLiteral("menuDidChange"); }
    void flashVolume(int, const QString& text) override { m_record << QStringLiteral("flash ") + text; }
    void setBuffering(bool isBuffering) override { buffering = isBuffering; }
    bool buffering = false;
    [[nodiscard]] StatusItemMode mode() const override { return StatusItemMode::direct; }

    void setAction(Action value) override {
        m_record << QStringLiteral("setAction");
        action = std::move(value);
    }
    void sendActionOn(unsigned eventMask) override {
        m_record << QStringLiteral("sendActionOn %1").arg(eventMask);
    }
    void setTitle(const QString& value) override {
        m_record << QStringLiteral("setTitle");
        title = value;
    }
    void setImagePosition(ImagePosition value) override {
        m_record << QStringLiteral("setImagePosition");
        imagePosition = value;
    }
    void setImage(const QString& symbolName, const QString& accessibilityDescription) override {
        m_record << QStringLiteral("setImage");
        symbol = symbolName;
        description = accessibilityDescription;
    }
    void setToolTip(const QString& value) override {
        m_record << QStringLiteral("setToolTip");
        toolTip = value;
        ++refreshes;
    }
    [[nodiscard]] double height() const override { return buttonHeight; }
    void popUpMenu(const Menu& menu, QPointF location) override {
        m_record << QStringLiteral("popUpMenu %1,%2").arg(location.x()).arg(location.y());
        shownMenus.push_back(menu);
    }

    bool hasButton = true;
    double buttonHeight = 22.0;
    Action action;
    QString title;
    std::optional<ImagePosition> imagePosition;
    QString symbol;
    QString description;
    QString toolTip;
    /// How often the button was redrawn: the tool tip comes last.
    int refreshes = 0;
    std::vector<Menu> shownMenus;

private:
    QStringList& m_record;
};

/// Makes one fake item, or none.
class FakeStatusBar final : public StatusBar {
public:
    explicit FakeStatusBar(QStringList& record)
        : m_record(record) {}

    std::unique_ptr<StatusItem> statusItem(double length) override {
        m_record << QStringLiteral("statusItem %1").arg(length);
        if (!givesItems)
            return nullptr;
        auto made = std::make_unique<FakeStatusItem>(m_record);
        made->hasButton = itemsHaveButtons;
        item = made.get();
        return made;
    }

    bool givesItems = true;
    bool itemsHaveButtons = true;
    /// The latest item.
    FakeStatusItem* item = nullptr;

private:
    QStringList& m_record;
};

} // namespace zofra::test
