// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelParts.h"

#include "app/VolumePercent.h"
#include "app/panel/Card.h"
#include "app/panel/CheckBox.h"
#include "app/panel/CreditLine.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/IconLabel.h"
#include "app/panel/MenuButton.h"
#include "app/panel/PlayButton.h"
#include "app/panel/SongCard.h"
#include "app/panel/VolumeSlider.h"
#include "stations/texts/InterfaceTexts.h"

#include <QBoxLayout>

#include <algorithm>
#include <optional>
#include <utility>

namespace zofra {

namespace {

// Gaps as drawn; the room that parts keep for their rings is already part of each.
constexpr qreal panelWidth = 360;
constexpr qreal partsPadding = 18;
constexpr qreal topPadding = 16;
constexpr qreal bottomPadding = 18;
constexpr qreal rowGap = 14;
constexpr qreal footGap = 12;
constexpr qreal ring = 4;

/// What is left of a gap between rows that keep room for rings themselves.
int betweenRows(const PanelMetrics& metrics, qreal gap) {
    return std::max(0, metrics.gap(gap) - 2 * metrics.bleed());
}

/// A row without margins, with a gap between the bodies of its parts.
QHBoxLayout* makeRow(const PanelMetrics& metrics, qreal gap) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(gap > 2 * ring ? metrics.px(gap - 2 * ring) : 0);
    return row;
}

} // namespace

PanelParts::PanelParts(QWidget& panel, const PanelLook& look, const QString& version)
    : m_panel(panel)
    , m_look(look) {
    const PanelMetrics& metrics = m_look.metrics;
    // Whatever was built for other sizes goes; menus that are open go with it.
    delete panel.layout();
    qDeleteAll(panel.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));

    auto* rows = new QVBoxLayout(&panel);
    const int side = metrics.px(partsPadding - ring);
    rows->setContentsMargins(side, metrics.gap(topPadding) - metrics.bleed(), side,
                             metrics.gap(bottomPadding) - metrics.bleed());
    rows->setSpacing(betweenRows(metrics, rowGap));
    addHeader(*rows, version);
    addLanguages(*rows);
    station = addMenuRow(*rows, u"antenna.radiowaves.left.and.right"_qs, m_stationLabel);
    m_songs = new SongCard(m_look, &panel);
    rows->addWidget(m_songs);
    output = addMenuRow(*rows, u"hifispeaker.2.fill"_qs, m_outputLabel);
    addPlay(*rows);
    addVolume(*rows);
    addFoot(*rows);
    // Parts made for a panel that is already shown would stay hidden, and without a size.
    if (panel.isVisible()) {
        const auto parts = panel.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (QWidget* part : parts)
            part->show();
    }
    m_width = widestLanguage();
}

int PanelParts::widestLanguage() {
    // Four layouts that come out the same as long as the sizes do.
    static std::optional<std::pair<PanelMetrics, int>> last;
    if (last && last->first == m_look.metrics)
        return last->second;
    int widest = m_look.metrics.px(panelWidth);
    for (const AppLanguage language : allAppLanguages) {
        showTexts(language);
        m_panel.layout()->activate();
        widest = std::max(widest, m_panel.layout()->totalMinimumSize().width());
    }
    last.emplace(m_look.metrics, widest);
    return widest;
}

void PanelParts::addHeader(QBoxLayout& rows, const QString& version) {
    auto* row = makeRow(m_look.metrics, 12);
    row->addWidget(
        new IconLabel(m_look, u"ZofraLogo"_qs, {.size = 38, .cellWidth = 38, .cellHeight = 38}, &m_panel));
    auto* label = new ElidedLabel(m_look, {.size = 13, .ink = ElidedLabel::Ink::dim}, &m_panel);
    label->setContent(texts::version.in(AppLanguage::en, version));
    row->addWidget(label);
    rows.addLayout(row);
}

void PanelParts::addLanguages(QBoxLayout& rows) {
    auto* row = makeRow(m_look.metrics, 2 * ring);
    for (const AppLanguage language : allAppLanguages) {
        auto* button = new LanguageButton(m_look, language, &m_panel);
        languages.at(static_cast<size_t>(language)) = button;
        row->addWidget(button);
    }
    row->addStretch();
    rows.addLayout(row);
}

MenuButton* PanelParts::addMenuRow(QBoxLayout& rows, const QString& icon, ElidedLabel*& label) {
    auto* row = makeRow(m_look.metrics, 10);
    row->addWidget(new IconLabel(m_look, icon, {.alignment = Qt::AlignLeft}, &m_panel));
    label =
        new ElidedLabel(m_look, {.ink = ElidedLabel::Ink::dim, .room = ElidedLabel::Room::insists}, &m_panel);
    row->addWidget(label);
    row->addStretch();
    auto* button = new MenuButton(m_look, &m_panel);
    row->addWidget(button);
    rows.addLayout(row);
    return button;
}

void PanelParts::addPlay(QBoxLayout& rows) {
    auto* row = makeRow(m_look.metrics, 12);
    play = new PlayButton(m_look, &m_panel);
    row->addWidget(play);
    // As small as the drawings before the labels: a larger one beside a button looks like another button.
    m_speaker = new IconLabel(m_look, u"speaker.wave.2.fill"_qs,
                              {.cellWidth = 24, .cellHeight = 24, .alignment = Qt::AlignRight}, &m_panel);
    row->addWidget(m_speaker);
    rows.addLayout(row);
}

void PanelParts::addVolume(QBoxLayout& rows) {
    auto* row = makeRow(m_look.metrics, 12);
    volume = new VolumeSlider(m_look, &m_panel);
    row->addWidget(volume);
    m_volumePercent =
        new ElidedLabel(m_look, {.ink = ElidedLabel::Ink::dim, .alignment = Qt::AlignRight}, &m_panel);
    // As wide as its widest text, so that the slider beside it keeps its length.
    m_volumePercent->setContent(texts::volumePercent.in(AppLanguage::en, 100));
    m_volumePercent->setFixedWidth(
        std::max(m_volumePercent->sizeHint().width(), m_look.metrics.px(44 + 2 * ring)));
    row->addWidget(m_volumePercent);
    rows.addLayout(row);
}

void PanelParts::addFoot(QBoxLayout& rows) {
    auto* foot = new QVBoxLayout;
    foot->setContentsMargins(0, 0, 0, 0);
    foot->setSpacing(betweenRows(m_look.metrics, footGap));
    foot->addWidget(new Separator(m_look, &m_panel));
    credit = new CreditLine(m_look, &m_panel);
    foot->addWidget(credit);

    auto* row = makeRow(m_look.metrics, 2 * ring);
    launchAtLogin = new CheckBox(m_look, &m_panel);
    row->addWidget(launchAtLogin);
    row->addStretch();
    close = new TextButton(m_look, &m_panel);
    row->addWidget(close);
    foot->addLayout(row);
    rows.addLayout(foot);
}

void PanelParts::showTexts(AppLanguage language) {
    m_stationLabel->setContent(texts::stationLabel.in(language));
    m_songs->setLanguage(language);
    m_outputLabel->setContent(texts::outputLabel.in(language));
    output->setHelp(texts::synchronizationNote.in(language));
    output->setAccessibleDescription(output->help());
    volume->setAccessibleName(texts::volume.in(language));
    credit->setLanguage(language);
    launchAtLogin->setTitle(texts::startAutomatically.in(language));
    close->setTitle(texts::closeWindow.in(language));
}

void PanelParts::show(const RadioState& state) {
    const AppLanguage language = state.language;
    if (language != m_shownLanguage) {
        const auto change = m_shownLanguage ? LanguageButton::Change::fades : LanguageButton::Change::atOnce;
        for (LanguageButton* button : languages)
            button->setCurrent(button->language() == language, change);
        m_shownLanguage = language;
        showTexts(language);
    }
    const QString stationName = state.station.displayName();
    station->setContent(texts::stationLabel.in(language), stationName);
    station->refreshMenu();
    m_songs->setAccessibleName(stationName);
    m_songs->setSongs(state.currentSong, state.nextSong);
    output->setContent(texts::outputLabel.in(language), state.targetTitle);
    output->refreshMenu();
    play->setContent(state.isPlaying ? u"stop.fill"_qs : u"play.fill"_qs,
                     (state.isPlaying ? texts::stopMusic : texts::playMusic).in(language));
    play->setWaiting(state.isBuffering, texts::loading.in(language));
    m_speaker->setInk(state.isPlaying ? IconLabel::Ink::accent : IconLabel::Ink::dim);
    const int percent = volumePercent(state.volume).value_or(0);
    volume->show(percent);
    m_volumePercent->setContent(texts::volumePercent.in(AppLanguage::en, percent));
}

} // namespace zofra
