// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <vector>

namespace zofra {

/// One option the engine is made with.
struct MpvOption {
    /// Without a required one there is no sound: it keeps the listener safe or the player right.
    enum class Need { required, ifKnown };
    const char* name;
    QByteArray value;
    Need need;
};

/// Every option.
[[nodiscard]] inline std::vector<MpvOption> mpvOptions() {
    using enum MpvOption::Need;
    return {
        // Nothing but sound of one of the two kinds that stations send, and that from us: no files of the
        // user's, no connections of the engine's own, no lists that lead elsewhere, no scripts.
        {"config", "no", required},
        {"load-scripts", "no", required},
        {"ytdl", "no", ifKnown},
        {"osc", "no", ifKnown},
        {"load-stats-overlay", "no", ifKnown},
        {"load-osd-console", "no", ifKnown},
        {"load-auto-profiles", "no", ifKnown},
        {"load-unsafe-playlists", "no", required},
        {"access-references", "no", ifKnown},
        {"autoload-files", "no", ifKnown},
        {"resume-playback", "no", ifKnown},
        {"demuxer", "lavf", required},
        // Without a bound on its index it would remember where each frame is, for a quarter of an hour: a
        // megabyte of a stream that never goes back.
        {"demuxer-lavf-o", "format_whitelist=[aac,mp3],protocol_whitelist=[none],indexmem=4096", required},
        {"stream-lavf-o", "protocol_whitelist=[none]", required},
        {"tls-verify", "yes", required},
        // An engine without a face.
        {"terminal", "no", required},
        {"input-default-bindings", "no", ifKnown},
        {"input-terminal", "no", ifKnown},
        {"input-media-keys", "no", ifKnown},
        {"idle", "yes", required},
        {"vid", "no", required},
        {"sid", "no", ifKnown},
        {"vo", "null", ifKnown},
        {"audio-display", "no", ifKnown},
        {"audio-file-auto", "no", ifKnown},
        {"sub-auto", "no", ifKnown},
        {"osd-level", "0", ifKnown},
        {"title", "${media-title}", ifKnown},
        // The stream.
        {"cache", "yes", required},
        {"cache-secs", "20", required},
        {"demuxer-max-bytes", "4MiB", required},
        {"demuxer-max-back-bytes", "0", required},
        {"cache-pause-initial", "no", required},
        {"cache-pause-wait", "1", required},
        // The device. Its buffers are as long as a change of volume may take to be heard; shorter ones cost
        // several times the wake-ups.
        {"ao", "pulse,pipewire,alsa", required},
        {"audio-fallback-to-null", "no", required},
        {"audio-client-name", "be.zofra.ZofraZofra", ifKnown},
        {"pulse-buffer", "300", ifKnown},
        {"alsa-buffer-time", "300000", ifKnown},
        {"alsa-periods", "4", ifKnown},
        {"volume-max", "100", required},
    };
}

/// The engine's number for a linear amplitude of 0 to 1: its scale is cubic, 100 is full.
[[nodiscard]] inline double mpvVolume(float linear) {
    return 100.0 * std::cbrt(std::clamp(static_cast<double>(linear), 0.0, 1.0));
}

} // namespace zofra
