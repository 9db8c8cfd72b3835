// SPDX-License-Identifier: GPL-3.0-or-later
// How the panel is put together, from top to bottom.
#include "app/panel/AboutPopupView.h"
#include "app/panel/Card.h"
#include "app/panel/CheckBox.h"
#include "app/panel/CreditLine.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/IconLabel.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/MenuButton.h"
#include "app/panel/PanelMenus.h"
#include "app/panel/PlayButton.h"
#include "app/panel/SongCard.h"
#include "app/panel/VolumeSlider.h"
#include "playback/RadioPlayer.h"
#include "stations/texts/InterfaceTexts.h"

#include <QBoxLayout>

namespace zofra {

namespace {

// Gaps as drawn; the room that parts keep for their rings is already part of each.
constexpr qreal sidePadding = 18;
constexpr qreal topPadding = 16;
constexpr qreal bottomPadding = 18;
constexpr qreal rowGap = 14;
constexpr qreal footGap = 12;
constexpr qreal ring = 4;

/// A row without margins, with a gap between the bodies of its parts.
QHBoxLayout* makeRow(const PanelMetrics& metrics, qreal gap) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(gap > 2 * ring ? metrics.px(gap - 2 * ring) : 0);
    return row;
}

ElidedLabel::Style dimLabel(ElidedLabel::Room room) {
    ElidedLabel::Style style;
    style.ink = ElidedLabel::Ink::dim;
    style.room = room;
    return style;
}

} // namespace

void AboutPopupView::build() {
    const PanelMetrics& metrics = m_look.metrics;
    // Whatever was built for other sizes goes; menus that are open go with it.
    m_parts = Parts();
    m_shownLanguage.reset();
    delete layout();
    qDeleteAll(findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));

    auto* rows = new QVBoxLayout(this);
    const int side = metrics.px(sidePadding - ring);
    rows->setContentsMargins(side, metrics.px(topPadding - ring), side, metrics.px(bottomPadding - ring));
    rows->setSpacing(metrics.px(rowGap - 2 * ring));
    addHeader(*rows);
    addLanguages(*rows);
    addStation(*rows);
    m_parts.songs = std::make_unique<SongCard>(m_look, this);
    rows->addWidget(m_parts.songs->widget());
    addOutput(*rows);
    addPlay(*rows);
    addVolume(*rows);
    addFoot(*rows);
    const auto parts = findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    // Parts made for a panel that is already shown would stay hidden.
    if (isVisible()) {
        for (QWidget* part : parts)
            part->show();
        m_parts.launchAtLogin->setChecked(m_launchAtLogin);
    }
}

void AboutPopupView::addHeader(QBoxLayout& rows) {
    IconLabel::Style logo;
    logo.size = logo.cellWidth = logo.cellHeight = 38;
    ElidedLabel::Style version = dimLabel(ElidedLabel::Room::givesWay);
    version.size = 13;
    auto* row = makeRow(m_look.metrics, 12);
    row->addWidget(new IconLabel(m_look, QStringLiteral("ZofraLogo"), logo, this));
    auto* label = new ElidedLabel(m_look, version, this);
    label->setContent(texts::version.in(AppLanguage::en, m_content.version));
    row->addWidget(label);
    rows.addLayout(row);
}

void AboutPopupView::addLanguages(QBoxLayout& rows) {
    auto* row = makeRow(m_look.metrics, 2 * ring);
    for (const AppLanguage language : allAppLanguages) {
        auto* button = new LanguageButton(m_look, language, this);
        connect(button, &QPushButton::clicked, this,
                [this, language] { m_actions.chooseLanguage(language); });
        m_parts.languages.at(static_cast<size_t>(language)) = button;
        row->addWidget(button);
    }
    row->addStretch();
    rows.addLayout(row);
}

MenuButton* AboutPopupView::addMenuRow(QBoxLayout& rows, const QString& icon, ElidedLabel*& label) {
    auto* row = makeRow(m_look.metrics, 10);
    IconLabel::Style style;
    style.alignment = Qt::AlignLeft;
    row->addWidget(new IconLabel(m_look, icon, style, this));
    label = new ElidedLabel(m_look, dimLabel(ElidedLabel::Room::insists), this);
    row->addWidget(label);
    row->addStretch();
    auto* button = new MenuButton(m_look, this);
    row->addWidget(button);
    rows.addLayout(row);
    return button;
}

void AboutPopupView::addStation(QBoxLayout& rows) {
    m_parts.station =
        addMenuRow(rows, QStringLiteral("antenna.radiowaves.left.and.right"), m_parts.stationLabel);
    m_parts.station->makeEntries = [this] { return stationMenuEntries(m_content.player.currentStation); };
    m_parts.station->onChosen = [this](const PanelMenuEntry& entry) {
        if (const auto station = RadioStation::fromRawValue(entry.argument))
            m_actions.chooseStation(*station);
    };
}

void AboutPopupView::addOutput(QBoxLayout& rows) {
    m_parts.output = addMenuRow(rows, QStringLiteral("hifispeaker.2.fill"), m_parts.outputLabel);
    m_parts.output->makeEntries = [this] {
        return outputMenuEntries(m_content.sonos, m_content.languages.currentLanguage());
    };
    m_parts.output->onChosen = [this](const PanelMenuEntry& entry) {
        outputChosen(entry.command, entry.argument);
    };
}

void AboutPopupView::addPlay(QBoxLayout& rows) {
    auto* row = makeRow(m_look.metrics, 12);
    m_parts.play = new PlayButton(m_look, this);
    connect(m_parts.play, &QPushButton::clicked, this, [this] { m_actions.togglePlayPause(); });
    row->addWidget(m_parts.play);
    IconLabel::Style speaker;
    speaker.size = 22;
    speaker.cellWidth = 24;
    speaker.cellHeight = 24;
    speaker.alignment = Qt::AlignRight;
    m_parts.speaker = new IconLabel(m_look, QStringLiteral("speaker.wave.2.fill"), speaker, this);
    row->addWidget(m_parts.speaker);
    rows.addLayout(row);
}

void AboutPopupView::addVolume(QBoxLayout& rows) {
    auto* row = makeRow(m_look.metrics, 12);
    m_parts.volume = new VolumeSlider(m_look, this);
    m_parts.volume->onMoved = [this](float volume) { m_actions.setVolume(volume); };
    row->addWidget(m_parts.volume);
    ElidedLabel::Style percent = dimLabel(ElidedLabel::Room::givesWay);
    percent.alignment = Qt::AlignRight;
    m_parts.volumePercent = new ElidedLabel(m_look, percent, this);
    // As wide as its widest text, so that the slider beside it keeps its length.
    m_parts.volumePercent->setContent(texts::volumePercent.in(AppLanguage::en, 100));
    m_parts.volumePercent->setFixedWidth(
        std::max(m_parts.volumePercent->sizeHint().width(), m_look.metrics.px(44 + 2 * ring)));
    row->addWidget(m_parts.volumePercent);
    rows.addLayout(row);
}

void AboutPopupView::addFoot(QBoxLayout& rows) {
    auto* foot = new QVBoxLayout;
    foot->setContentsMargins(0, 0, 0, 0);
    foot->setSpacing(m_look.metrics.px(footGap - 2 * ring));
    foot->addWidget(new Separator(m_look, this));
    m_parts.credit = new CreditLine(m_look, this);
    m_parts.credit->onLink = [this] { m_actions.writeToUs(); };
    foot->addWidget(m_parts.credit);

    auto* row = makeRow(m_look.metrics, 2 * ring);
    m_parts.launchAtLogin = new CheckBox(m_look, this);
    connect(m_parts.launchAtLogin, &QCheckBox::toggled, this, &AboutPopupView::launchAtLoginToggled);
    row->addWidget(m_parts.launchAtLogin);
    row->addStretch();
    m_parts.close = new TextButton(m_look, this);
    connect(m_parts.close, &QPushButton::clicked, this, [this] { m_actions.close(); });
    row->addWidget(m_parts.close);
    foot->addLayout(row);
    rows.addLayout(foot);
}

} // namespace zofra
