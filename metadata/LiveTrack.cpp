// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/LiveTrack.h"

namespace zofra {

namespace {

QString joined(const std::optional<ZofraLiveArtist>& artist, const std::optional<QString>& title,
               const QString& otherwise) {
    auto a = artist ? artist->name.value_or(QString()).trimmed() : QString();
    auto t = title.value_or(QString()).trimmed();
    if (!a.isEmpty() && !t.isEmpty())
        return a + nowPlayingSeparator() + t;
    if (!t.isEmpty())
        return t;
    return a.isEmpty() ? otherwise : a;
}

} // namespace

QString nowPlayingSeparator() {
    return u" \u2013 "_qs;
}

QString ZofraNextTrack::formatted() const {
    return joined(artist, title, QString());
}

QString ZofraLiveTrackData::formattedCurrent() const {
    return joined(artist, title, u"Radio"_qs);
}

std::optional<QString> ZofraLiveTrackData::formattedNext() const {
    const QString text = next ? next->formatted() : QString();
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

} // namespace zofra
