// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/DescriptionRequest.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/SpeakerDiscovery.h"

#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::milliseconds probeTimeout{1500};
constexpr int firstHost = 1;
constexpr int lastHost = 254;

} // namespace

QSet<QUrl> SpeakerDiscovery::probeSubnet(const QString& ip) const {
    const auto pieces = ip.split(u'.', Qt::SkipEmptyParts);
    if (pieces.size() != 4)
        return {};
    const QString prefix = QStringLiteral("http://") + pieces[0] + u'.' + pieces[1] + u'.' + pieces[2] + u'.';
    const auto found = std::make_shared<PlayerLocked<QSet<QUrl>>>();
    const auto group = std::make_shared<DispatchGroup>(m_background->waitPoint());
    for (int host = firstHost; host <= lastHost; ++host) {
        const QUrl url(prefix + QString::number(host) + QStringLiteral(":1400/xml/device_description.xml"),
                       QUrl::StrictMode);
        if (!url.isValid())
            continue;
        if (!m_background->probeLimit()->wait())
            return {};
        probe(url, found, group);
    }
    return group->wait() ? found->value() : QSet<QUrl>();
}

void SpeakerDiscovery::probe(const QUrl& url, const std::shared_ptr<PlayerLocked<QSet<QUrl>>>& found,
                             const std::shared_ptr<DispatchGroup>& group) const {
    group->enter();
    const auto done = finally([limit = m_background->probeLimit(), group] {
        limit->signal();
        group->leave();
    });
    m_background->start(descriptionRequest(url, probeTimeout), [url, found, done](const HttpResult& result) {
        if (result.response && result.response->status == 200) {
            const auto text = QString::fromUtf8(result.response->body);
            if (NetworkPlayerProtocol::speaker(text, url))
                found->with([&url](QSet<QUrl>& urls) { urls.insert(url); });
        }
        done->run();
    });
}

} // namespace zofra
