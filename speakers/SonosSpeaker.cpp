// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SonosSpeaker.h"

#include "speakers/PlainOrder.h"
#include "speakers/PlayerAddress.h"

namespace zofra {

namespace {

bool sameIgnoringCase(const QString& a, QLatin1String b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace

QUrl SonosSpeaker::deviceDescriptionURL() const {
    if (descriptionURL)
        return *descriptionURL;
    auto url = usualDescriptionAddress(ip);
    if (!url.isValid() || url.host().isEmpty())
        qFatal("a player's address is no host name");
    return url;
}

bool SonosSpeaker::isZofra() const {
    const QLatin1String ownModel("Zofra Pi Player");
    return sameIgnoringCase(manufacturer.value_or(QString()), QLatin1String("Zofra Zofra")) ||
           sameIgnoringCase(modelName.value_or(QString()), ownModel) || sameIgnoringCase(model, ownModel);
}

QUrl SonosSpeaker::endpoint(const std::optional<QString>& path, const QString& fallback) const {
    const auto base = deviceDescriptionURL();
    if (path) {
        const QUrl reference(*path, QUrl::StrictMode);
        // An absolute reference brings its own scheme, to be spelt as required; an empty one is no address.
        if (reference.isValid() && (reference.isRelative() || playerAddress(*path))) {
            auto resolved = base.resolved(reference);
            const auto scheme = resolved.scheme();
            const bool isHttp = scheme == u"http" || scheme == u"https";
            if (resolved.isValid() && isHttp && !resolved.host().isEmpty())
                return resolved;
        }
    }
    return base.resolved(QUrl(fallback));
}

size_t qHash(const SonosSpeaker& speaker, size_t seed) {
    SonosSpeaker::visitFields(speaker, [&seed]<typename Field>(const char*, const Field& field) {
        if constexpr (requires { field.has_value(); })
            seed = field ? qHashMulti(seed, 1, *field) : qHashMulti(seed, 0);
        else
            seed = qHashMulti(seed, field);
    });
    return seed;
}

bool comesBefore(const SonosSpeaker& a, const SonosSpeaker& b) {
    return plainlyBefore(a.id, b.id);
}

} // namespace zofra
