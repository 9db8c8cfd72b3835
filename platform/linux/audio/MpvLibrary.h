// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <memory>
#include <mpv/client.h>
#include <mpv/stream_cb.h>

namespace zofra {

/// libmpv, loaded when the first stream is played: it brings so many libraries with it that a program that is
/// only waiting in the status bar should not carry them. Callable from any thread. Never unloaded.
class MpvLibrary {
public:
    /// The library, or why it cannot be used. May take a tenth of a second: not for the main thread.
    [[nodiscard]] static Result<std::shared_ptr<const MpvLibrary>> load(const char* fileName);
    static constexpr const char* defaultFileName = "libmpv.so.2";

    /// A new mpv with every option of ours. The caller ends it.
    [[nodiscard]] Result<mpv_handle*> start() const;
    /// mpv's words for an error.
    [[nodiscard]] QString errorText(int error) const { return QString::fromUtf8(errorString(error)); }

    decltype(&::mpv_client_api_version) clientApiVersion = nullptr;
    decltype(&::mpv_create) create = nullptr;
    decltype(&::mpv_initialize) initialize = nullptr;
    decltype(&::mpv_terminate_destroy) terminateDestroy = nullptr;
    decltype(&::mpv_set_option_string) setOptionString = nullptr;
    decltype(&::mpv_observe_property) observeProperty = nullptr;
    decltype(&::mpv_set_property_async) setPropertyAsync = nullptr;
    decltype(&::mpv_command_async) commandAsync = nullptr;
    decltype(&::mpv_set_wakeup_callback) setWakeupCallback = nullptr;
    decltype(&::mpv_wait_event) waitEvent = nullptr;
    decltype(&::mpv_error_string) errorString = nullptr;
    decltype(&::mpv_stream_cb_add_ro) streamCbAddRo = nullptr;
};

} // namespace zofra
