// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerPlaybackGroup.h"
#include "speakers/SpeakerBackground.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>

namespace zofra {

/// Gives a stream to several groups of players, all at once. In each group the leader leaves whatever group
/// it is in, is given the stream and told to play; then the others join it. `finished` is called once, on the
/// thread of the last answer (in place when there is no group), with the number of groups whose leader plays.
void startPlayback(const std::shared_ptr<SpeakerBackground>& background,
                   const QList<PlayerPlaybackGroup>& groups, const QString& streamUri,
                   std::function<void(qsizetype started)> finished);

/// Tells several players to pause. `finished` is called once, on the thread of the last answer, with whether
/// any of them did. There must be at least one.
void pausePlayers(const std::shared_ptr<SpeakerBackground>& background, const QList<SonosSpeaker>& speakers,
                  std::function<void(bool succeeded)> finished);

} // namespace zofra
