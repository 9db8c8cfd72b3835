// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHashFunctions>
#include <QString>

#include <cstdint>
#include <utility>

namespace zofra {

/// Where the audio goes: this computer, one room, or every room. A plain value, callable from any thread.
class AudioOutputTarget {
public:
    enum class Kind : std::uint8_t { localMac, sonos, sonosEverywhere };

    /// This computer.
    [[nodiscard]] static AudioOutputTarget localMac() { return AudioOutputTarget(Kind::localMac, {}); }
    /// The room with this id.
    [[nodiscard]] static AudioOutputTarget sonos(QString roomId) {
        return AudioOutputTarget(Kind::sonos, std::move(roomId));
    }
    /// Every eligible player at once.
    [[nodiscard]] static AudioOutputTarget sonosEverywhere() {
        return AudioOutputTarget(Kind::sonosEverywhere, {});
    }

    [[nodiscard]] Kind kind() const { return m_kind; }
    /// The room's id; empty unless the kind is `sonos`.
    [[nodiscard]] const QString& roomId() const { return m_roomId; }

    friend bool operator==(const AudioOutputTarget&, const AudioOutputTarget&) = default;
    friend size_t qHash(const AudioOutputTarget& target, size_t seed = 0) {
        const int ordinal = static_cast<int>(target.m_kind);
        return target.m_kind == Kind::sonos ? qHashMulti(seed, ordinal, target.m_roomId)
                                            : qHashMulti(seed, ordinal);
    }

private:
    AudioOutputTarget(Kind kind, QString roomId)
        : m_kind(kind)
        , m_roomId(std::move(roomId)) {}

    Kind m_kind;
    QString m_roomId;
};

} // namespace zofra
