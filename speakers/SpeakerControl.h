// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SoapRequest.h"
#include "speakers/SpeakerBackground.h"

#include <functional>
#include <memory>
#include <utility>

namespace zofra {

/// Where a player's AVTransport service is controlled.
[[nodiscard]] inline QUrl transportEndpoint(const SonosSpeaker& speaker) {
    return speaker.endpoint(speaker.transportPath, QString::fromLatin1(ControlPath::transport));
}

/// Sends control requests to players. Keeps no state of its own; callable from any thread. A completion is
/// called once, on the session's thread. Nothing is retried.
class SpeakerControl {
public:
    using Completion = std::function<void(bool succeeded)>;

    explicit SpeakerControl(std::shared_ptr<SpeakerBackground> background)
        : m_background(std::move(background)) {}

    /// Succeeds with status 200 or 204. A failure is logged while the manager lives.
    void sendSOAPAction(const QUrl& endpoint, const QString& service, const QString& action,
                        const QString& body, Completion completion) const {
        auto finished = [background = m_background, action, endpoint,
                         completion = std::move(completion)](const HttpResult& result) {
            const int status = result ? result->status : 0;
            if (!result)
                background->noteIfDenied(result.error(), endpoint);
            const bool succeeded = status == 200 || status == 204;
            if (!succeeded) {
                const auto host = endpoint.host();
                background->log(u"SOAP %1 an %2 fehlgeschlagen: HTTP %3"_qs.arg(
                    action, host.isEmpty() ? u"?"_qs : host, QString::number(status)));
            }
            if (completion)
                completion(succeeded);
        };
        m_background->outside().session.start(soapRequest(endpoint, service, action, body),
                                              std::move(finished));
    }
    /// `endpoint` is the player's AVTransport address.
    void setAVTransportURI(const QUrl& endpoint, const QString& uri, Completion completion) const {
        sendSOAPAction(endpoint, u"AVTransport:1"_qs, u"SetAVTransportURI"_qs, setTransportUriBody(uri),
                       std::move(completion));
    }
    /// Makes a player leave its group; `then` is called with true where there is nothing to leave.
    void detachIfGrouped(const SonosSpeaker& speaker, Completion then) const {
        const bool isGrouped = speaker.groupCoordinatorId && *speaker.groupCoordinatorId != speaker.id;
        if (speaker.isZofra() || !isGrouped)
            return then(true);
        sendTransportAction(speaker, u"BecomeCoordinatorOfStandaloneGroup"_qs, std::move(then));
    }

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
    void setVolume(const SonosSpeaker& speaker, int percent, Completion completion) const {
        sendSOAPAction(speaker.endpoint(speaker.renderingPath, QString::fromLatin1(ControlPath::rendering)),
                       u"RenderingControl:1"_qs, u"SetVolume"_qs, setVolumeBody(percent),
                       std::move(completion));
    }
    /// Makes a player follow another one.
    void join(const SonosSpeaker& follower, const SonosSpeaker& coordinator, Completion completion) const {
        setAVTransportURI(transportEndpoint(follower), u"x-rincon:"_qs + coordinator.id,
                          std::move(completion));
    }

private:
    /// `arguments` follow the instance that every action names.
    void sendTransportAction(const SonosSpeaker& speaker, const QString& action, Completion completion,
                             const QString& arguments = {}) const {
        sendSOAPAction(transportEndpoint(speaker), u"AVTransport:1"_qs, action,
                       u"<InstanceID>0</InstanceID>"_qs + arguments, std::move(completion));
    }

    std::shared_ptr<SpeakerBackground> m_background;
};

} // namespace zofra
