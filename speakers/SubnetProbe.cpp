// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SubnetProbe.h"

#include "speakers/DescriptionRequest.h"
#include "speakers/PlayerDescription.h"
#include "speakers/TextFetcher.h"

#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::milliseconds probeTimeout{1500};
constexpr int firstHost = 1;
constexpr int lastHost = 254;

} // namespace

QSet<QUrl> probeSubnet(const std::shared_ptr<SpeakerBackground>& background, const QString& ip) {
    const auto pieces = ip.split(u'.', Qt::SkipEmptyParts);
    if (pieces.size() != 4)
        return {};
    const QString prefix = QStringLiteral("http://") + pieces[0] + u'.' + pieces[1] + u'.' + pieces[2] + u'.';
    std::vector<HttpRequest> requests;
    for (int host = firstHost; host <= lastHost; ++host) {
        const QUrl url(prefix + QString::number(host) + QStringLiteral(":1400/xml/device_description.xml"),
                       QUrl::StrictMode);
        if (url.isValid())
            requests.push_back(descriptionRequest(url, probeTimeout));
    }
    QSet<QUrl> found;
    TextFetcher(background)
        .fetchTexts(requests, TextFetcher::Denial::ignored, [&](std::size_t index, const QString& text) {
            if (NetworkPlayerProtocol::speaker(text, requests[index].url))
                found.insert(requests[index].url);
        });
    return found;
}

} // namespace zofra
