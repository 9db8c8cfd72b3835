// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/AboutPopupView.h"

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
#include "metadata/RadioViewModel.h"
#include "playback/RadioPlayer.h"
#include "speakers/SonosManager.h"
#include "stations/LanguageManager.h"
#include "stations/texts/InterfaceTexts.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QPaintEvent>
#include <QScreen>
#include <QSignalBlocker>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal panelWidth = 360;

/// What the panel posts to itself.
constexpr auto refreshEvent = static_cast<QEvent::Type>(QEvent::User + 1);
constexpr auto rebuildEvent = static_cast<QEvent::Type>(QEvent::User + 2);

PanelLook makeLook(const PanelEnvironment& environment, const QWidget& widget) {
    return {PanelTheme::make(environment.appearance.current(), widget.palette()),
            PanelMetrics(widget.font(), widget.logicalDpiY(), widget.screen()->availableGeometry().height()),
            environment.icons};
}

} // namespace

AboutPopupView::AboutPopupView(PopupPanelContent content, const PanelEnvironment& environment,
                               QWidget* parent)
    : QWidget(parent)
    , m_content(std::move(content))
    , m_environment(environment)
    , m_actions(m_content, environment.loginItem, environment.output, environment.workspace)
    , m_look(makeLook(environment, *this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(QStringLiteral("Zofra Zofra"));
    build();
    observe();
    refresh();
    // The keyboard starts on the panel itself: Tab then goes to the first part, and Return closes.
    setFocus();
}

AboutPopupView::~AboutPopupView() = default;

void AboutPopupView::observe() {
    const auto changed = [this] { scheduleRefresh(); };
    m_observations[0] = m_content.viewModel.observe(changed);
    m_observations[1] = m_content.player.observe(changed);
    m_observations[2] = m_content.sonos.observe(changed);
    m_observations[3] = m_content.languages.observe(changed);
    m_observations[4] = m_environment.appearance.observeChanged([this] { updateLook(); });
}

void AboutPopupView::scheduleRefresh() {
    if (m_isRefreshScheduled)
        return;
    m_isRefreshScheduled = true;
    // Later, for observers are told before the field has its new value.
    QCoreApplication::postEvent(this, new QEvent(refreshEvent));
}

void AboutPopupView::refresh() {
    ++m_refreshCount;
    const AppLanguage language = m_content.languages.currentLanguage();
    if (language != m_shownLanguage)
        showTexts(language);
    showState(language);
    updateNaturalSize();
    // Now rather than in a later turn, or one frame would show the new texts in the places of the old ones.
    layout()->activate();
}

void AboutPopupView::showTexts(AppLanguage language) {
    const auto change = m_shownLanguage ? LanguageButton::Change::fades : LanguageButton::Change::atOnce;
    m_shownLanguage = language;
    for (LanguageButton* button : m_parts.languages)
        button->setCurrent(button->language() == language, change);
    m_parts.stationLabel->setContent(texts::stationLabel.in(language));
    m_parts.songs->setLanguage(language);
    m_parts.outputLabel->setContent(texts::outputLabel.in(language));
    m_parts.output->setHelp(texts::synchronizationNote.in(language));
    m_parts.volume->setAccessibleName(texts::volume.in(language));
    m_parts.credit->setLanguage(language);
    m_parts.launchAtLogin->setTitle(texts::startAutomatically.in(language));
    m_parts.close->setTitle(texts::closeWindow.in(language));
}

void AboutPopupView::showState(AppLanguage language) {
    m_parts.station->setContent(texts::stationLabel.in(language),
                                m_content.player.currentStation.get().displayName());
    m_parts.station->refreshMenu();
    m_parts.songs->setSongs(m_content.viewModel.currentSong, m_content.viewModel.nextSong);
    m_parts.output->setContent(texts::outputLabel.in(language), m_content.sonos.activeTargetTitle());
    m_parts.output->refreshMenu();
    const bool isPlaying = m_actions.isPlaying();
    m_parts.play->setContent(isPlaying ? QStringLiteral("stop.fill") : QStringLiteral("play.fill"),
                             (isPlaying ? texts::stopMusic : texts::playMusic).in(language));
    m_parts.speaker->setInk(isPlaying ? IconLabel::Ink::accent : IconLabel::Ink::dim);
    const int percent = shownPercent(m_content.player.volume).value_or(0);
    m_parts.volume->show(percent);
    m_parts.volumePercent->setContent(texts::volumePercent.in(AppLanguage::en, percent));
}

void AboutPopupView::updateNaturalSize() {
    QLayout* rows = layout();
    const int width = std::max(m_look.metrics.px(panelWidth), rows->totalMinimumSize().width());
    const int height =
        rows->hasHeightForWidth() ? rows->totalHeightForWidth(width) : rows->totalSizeHint().height();
    setFixedSize(width, height);
}

void AboutPopupView::updateLook() {
    const PanelLook now = makeLook(m_environment, *this);
    if (now.metrics != m_look.metrics)
        scheduleRebuild();
    if (now.theme == m_look.theme)
        return;
    m_look.theme = now.theme;
    update();
    const auto parts = findChildren<QWidget*>();
    for (QWidget* part : parts)
        part->update();
}

void AboutPopupView::scheduleRebuild() {
    if (m_isRebuildScheduled)
        return;
    m_isRebuildScheduled = true;
    // Later, for whoever announces a new font is still going through the widgets that would be deleted.
    QCoreApplication::postEvent(this, new QEvent(rebuildEvent));
}

void AboutPopupView::rebuild() {
    m_look.metrics = makeLook(m_environment, *this).metrics;
    build();
    refresh();
    setFocus();
}

bool AboutPopupView::event(QEvent* event) {
    if (event->type() == refreshEvent) {
        m_isRefreshScheduled = false;
        refresh();
        return true;
    }
    if (event->type() == rebuildEvent) {
        m_isRebuildScheduled = false;
        rebuild();
        return true;
    }
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest)
        updateNaturalSize();
    return isHandled;
}

void AboutPopupView::changeEvent(QEvent* event) {
    switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::FontChange:
    case QEvent::StyleChange:
        updateLook();
        break;
    default:
        break;
    }
    QWidget::changeEvent(event);
}

void AboutPopupView::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn)
        m_parts.close->click();
    else if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close))
        m_actions.close();
    else
        QWidget::keyPressEvent(event);
}

void AboutPopupView::paintEvent(QPaintEvent* event) {
    QPainter(this).fillRect(event->rect(), m_look.theme.window);
}

void AboutPopupView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    m_launchAtLogin = m_actions.isLaunchedAtLogin();
    const QSignalBlocker quiet(m_parts.launchAtLogin);
    m_parts.launchAtLogin->setChecked(m_launchAtLogin);
}

void AboutPopupView::launchAtLoginToggled(bool isOn) {
    m_launchAtLogin = isOn;
    m_actions.updateLaunchAtLogin(isOn);
    // After a failure the box shows what is true, not what was wished for.
    m_launchAtLogin = m_actions.isLaunchedAtLogin();
    const QSignalBlocker quiet(m_parts.launchAtLogin);
    m_parts.launchAtLogin->setChecked(m_launchAtLogin);
}

void AboutPopupView::outputChosen(int command, const QString& roomId) {
    switch (static_cast<OutputCommand>(command)) {
    case OutputCommand::thisMac:
        m_actions.chooseThisMac();
        break;
    case OutputCommand::room:
        m_actions.chooseRoom(roomId);
        break;
    case OutputCommand::everywhere:
        m_actions.chooseEverywhere();
        break;
    case OutputCommand::search:
        m_actions.search();
        break;
    case OutputCommand::allowLocalNetwork:
        m_actions.openLocalNetworkSettings();
        break;
    }
}

} // namespace zofra
