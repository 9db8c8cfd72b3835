// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosSpeaker.h"
#include "speakers/SpeakerBackground.h"

#include <functional>
#include <memory>
#include <utility>

namespace zofra {

/// Sends control requests to players. Keeps no state of its own; callable from any thread. A completion is
/// called once, on the session's thread. Nothing is retried.
class SpeakerControl {
public:
    using Completion = std::function<void(bool succeeded)>;

    explicit SpeakerControl(std::shared_ptr<SpeakerBackground> background)
        : m_background(std::move(background)) {}

    /// Succeeds with status 200 or 204. A failure is logged while the manager lives.
    void sendSOAPAction(const QUrl& endpoint, const QString& service, const QString& action,
                        const QString& body, Completion completion) const;
    /// `endpoint` is the player's AVTransport address.
    void setAVTransportURI(const QUrl& endpoint, const QString& uri, Completion completion) const;
    /// Makes a player leave its group; `then` is called with true where there is nothing to leave.
    void detachIfGrouped(const SonosSpeaker& speaker, Completion then) const;

    void play(const SonosSpeaker& speaker, Completion completion) const {
        sendTransportAction(speaker, u"Play"_qs, std::move(completion), u"<Speed>1</Speed>"_qs);
    }
    void pause(const SonosSpeaker& speaker, Completion completion) const {
        sendTransportAction(speaker, u"Pause"_qs, std::move(completion));
    }
    void stop(const SonosSpeaker& speaker, Completion completion) const {
        sendTransportAction(speaker, u"Stop"_qs, std::move(completion));
    }
    /// Clamped to 0...100.
    void setVolume(const SonosSpeaker& speaker, int percent, Completion completion) const;
    /// Makes a player follow another one.
    void join(const SonosSpeaker& follower, const SonosSpeaker& coordinator, Completion completion) const;

private:
    /// `arguments` follow the instance that every action names.
    void sendTransportAction(const SonosSpeaker& speaker, const QString& action, Completion completion,
                             const QString& arguments = {}) const;

    std::shared_ptr<SpeakerBackground> m_background;
};

/// Where a player's AVTransport service is controlled.
[[nodiscard]] QUrl transportEndpoint(const SonosSpeaker& speaker);

} // namespace zofra
