// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlainOrder.h"
#include "speakers/PlayerAddress.h"

#include <QHashFunctions>
#include <QString>
#include <QUrl>

#include <optional>

namespace zofra {

/// One network player. A plain value: copied, compared and hashed member by member; callable from any thread.
struct SonosSpeaker {
    /// The device's UDN without its leading "uuid:". Never reassigned.
    QString id;
    /// Host part of the description address the player was found at. Never reassigned.
    QString ip;
    /// Room name shown to the user.
    QString roomName;
    /// Model text. Never reassigned.
    QString model;
    /// The player leads its group.
    bool isCoordinator = true;
    /// A subwoofer: never offered as a room, never played to.
    bool isSub = false;
    /// The player is shown to the user.
    bool isVisible = true;
    /// `id` of the leader of the group the player belongs to.
    std::optional<QString> groupCoordinatorId;
    std::optional<QString> manufacturer;
    std::optional<QString> modelName;
    /// Where the record was read from.
    std::optional<QUrl> descriptionURL;
    /// Control addresses as the description gives them, possibly relative.
    std::optional<QString> transportPath;
    std::optional<QString> renderingPath;
    std::optional<QString> topologyPath;

    /// `descriptionURL`, or the usual address on `ip`. Ends the program when `ip` is no host at all.
    [[nodiscard]] QUrl deviceDescriptionURL() const {
        if (descriptionURL)
            return *descriptionURL;
        auto url = usualDescriptionAddress(ip);
        if (!url.isValid() || url.host().isEmpty())
            qFatal("a player's address is no host name");
        return url;
    }
    /// One of this product's own players, which are grouped differently.
    [[nodiscard]] bool isZofra() const {
        const auto says = [](const std::optional<QString>& text, QStringView wanted) {
            return text && text->compare(wanted, Qt::CaseInsensitive) == 0;
        };
        constexpr QStringView ownModel = u"Zofra Pi Player";
        return says(manufacturer, u"Zofra Zofra") || says(modelName, ownModel) || says(model, ownModel);
    }
    /// The control address of a service: `path` resolved against the description's address when that gives an
    /// http or https address with a host, else `fallback` resolved likewise.
    [[nodiscard]] QUrl endpoint(const std::optional<QString>& path, const QString& fallback) const {
        const auto base = deviceDescriptionURL();
        const QUrl reference(path.value_or(QString()), QUrl::StrictMode);
        // An absolute reference brings its own scheme, to be spelt as required; an empty one is no address.
        if (path && reference.isValid() && (reference.isRelative() || playerAddress(*path))) {
            auto resolved = base.resolved(reference);
            const auto scheme = resolved.scheme();
            if (resolved.isValid() && (scheme == u"http" || scheme == u"https") && !resolved.host().isEmpty())
                return resolved;
        }
        return base.resolved(QUrl(fallback));
    }

    /// In their order, under the names that they are kept by.
    static void visitFields(auto& speaker, auto&& field) {
        field("id", speaker.id);
        field("ip", speaker.ip);
        field("roomName", speaker.roomName);
        field("model", speaker.model);
        field("isCoordinator", speaker.isCoordinator);
        field("isSub", speaker.isSub);
        field("isVisible", speaker.isVisible);
        field("groupCoordinatorId", speaker.groupCoordinatorId);
        field("manufacturer", speaker.manufacturer);
        field("modelName", speaker.modelName);
        field("descriptionURL", speaker.descriptionURL);
        field("transportPath", speaker.transportPath);
        field("renderingPath", speaker.renderingPath);
        field("topologyPath", speaker.topologyPath);
    }
    friend bool operator==(const SonosSpeaker&, const SonosSpeaker&) = default;
};

/// All fields in their order; an optional one adds whether it is there, then its value.
[[nodiscard]] inline size_t qHash(const SonosSpeaker& speaker, size_t seed = 0) {
    SonosSpeaker::visitFields(speaker, [&seed]<typename Field>(const char*, const Field& field) {
        if constexpr (requires { field.has_value(); })
            seed = field ? qHashMulti(seed, 1, *field) : qHashMulti(seed, 0);
        else
            seed = qHashMulti(seed, field);
    });
    return seed;
}

/// Speaker order: ascending by `id`, plain character order.
[[nodiscard]] inline bool comesBefore(const SonosSpeaker& a, const SonosSpeaker& b) {
    return plainlyBefore(a.id, b.id);
}

} // namespace zofra
