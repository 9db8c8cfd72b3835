// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvOptions.h"

#include <algorithm>
#include <cmath>

namespace zofra {

namespace {

using enum MpvOption::Need;

/// Nothing but sound of one of the two kinds that stations send, and that from us: no files of the user's, no
/// connections of the engine's own, no lists that lead elsewhere, no scripts.
void appendSafety(std::vector<MpvOption>& options) {
    const QByteArray protocols = "protocol_whitelist=[none]";
    // It would remember where each frame is, for a quarter of an hour: a megabyte of a stream that never goes
    // back.
    const QByteArray noIndex = ",indexmem=4096";
    options.insert(options.end(),
                   {
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
                       {"demuxer-lavf-o", "format_whitelist=[aac,mp3]," + protocols + noIndex, required},
                       {"stream-lavf-o", protocols, required},
                       {"tls-verify", "yes", required},
                   });
}

/// An engine without a face.
void appendSilentSurroundings(std::vector<MpvOption>& options) {
    options.insert(options.end(), {
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
                                  });
}

void appendStreaming(std::vector<MpvOption>& options) {
    options.insert(options.end(), {
                                      {"cache", "yes", required},
                                      {"cache-secs", "20", required},
                                      {"demuxer-max-bytes", "4MiB", required},
                                      {"demuxer-max-back-bytes", "0", required},
                                      {"cache-pause-initial", "no", required},
                                      {"cache-pause-wait", "1", required},
                                  });
}

/// The device buffers are as long as a change of volume may take to be heard; shorter ones cost several times
/// the wake-ups.
void appendDevice(std::vector<MpvOption>& options) {
    options.insert(options.end(), {
                                      {"ao", "pulse,pipewire,alsa", required},
                                      {"audio-fallback-to-null", "no", required},
                                      {"audio-client-name", "be.zofra.ZofraZofra", ifKnown},
                                      {"pulse-buffer", "300", ifKnown},
                                      {"alsa-buffer-time", "300000", ifKnown},
                                      {"alsa-periods", "4", ifKnown},
                                      {"volume-max", "100", required},
                                  });
}

} // namespace

std::vector<MpvOption> mpvOptions() {
    std::vector<MpvOption> options;
    appendSafety(options);
    appendSilentSurroundings(options);
    appendStreaming(options);
    appendDevice(options);
    return options;
}

double mpvVolume(float linear) {
    return 100.0 * std::cbrt(std::clamp(static_cast<double>(linear), 0.0, 1.0));
}

} // namespace zofra
