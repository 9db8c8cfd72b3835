// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerControl.h"

#include "speakers/SoapRequest.h"

namespace zofra {

namespace {

const QString transportService = u"AVTransport:1"_qs;

void logFailure(SpeakerBackground& background, const QString& action, const QUrl& endpoint, int status) {
    const auto host = endpoint.host();
    background.log(u"SOAP %1 an %2 fehlgeschlagen: HTTP %3"_qs.arg(action, host.isEmpty() ? u"?"_qs : host,
                                                                   QString::number(status)));
}

} // namespace

QUrl transportEndpoint(const SonosSpeaker& speaker) {
    return speaker.endpoint(speaker.transportPath, QString::fromLatin1(ControlPath::transport));
}

void SpeakerControl::sendSOAPAction(const QUrl& endpoint, const QString& service, const QString& action,
                                    const QString& body, Completion completion) const {
    auto finished = [background = m_background, action, endpoint,
                     completion = std::move(completion)](const HttpResult& result) {
        const int status = result ? result->status : 0;
        if (!result)
            background->noteIfDenied(result.error(), endpoint);
        const bool succeeded = status == 200 || status == 204;
        if (!succeeded)
            logFailure(*background, action, endpoint, status);
        if (completion)
            completion(succeeded);
    };
    m_background->outside().session.start(soapRequest(endpoint, service, action, body), std::move(finished));
}

void SpeakerControl::setAVTransportURI(const QUrl& endpoint, const QString& uri,
                                       Completion completion) const {
    sendSOAPAction(endpoint, transportService, u"SetAVTransportURI"_qs, setTransportUriBody(uri),
                   std::move(completion));
}

void SpeakerControl::detachIfGrouped(const SonosSpeaker& speaker, Completion then) const {
    const bool isGrouped = speaker.groupCoordinatorId && *speaker.groupCoordinatorId != speaker.id;
    if (!speaker.isZofra() && isGrouped)
        sendTransportAction(speaker, u"BecomeCoordinatorOfStandaloneGroup"_qs, std::move(then));
    else
        then(true);
}

void SpeakerControl::setVolume(const SonosSpeaker& speaker, int percent, Completion completion) const {
    const auto endpoint =
        speaker.endpoint(speaker.renderingPath, QString::fromLatin1(ControlPath::rendering));
    sendSOAPAction(endpoint, u"RenderingControl:1"_qs, u"SetVolume"_qs, setVolumeBody(percent),
                   std::move(completion));
}

void SpeakerControl::join(const SonosSpeaker& follower, const SonosSpeaker& coordinator,
                          Completion completion) const {
    setAVTransportURI(transportEndpoint(follower), u"x-rincon:"_qs + coordinator.id, std::move(completion));
}

void SpeakerControl::sendTransportAction(const SonosSpeaker& speaker, const QString& action,
                                         Completion completion, const QString& arguments) const {
    sendSOAPAction(transportEndpoint(speaker), transportService, action,
                   u"<InstanceID>0</InstanceID>"_qs + arguments, std::move(completion));
}

} // namespace zofra
