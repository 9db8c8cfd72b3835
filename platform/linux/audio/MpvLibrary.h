// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"
#include "platform/linux/LateLibrary.h"
#include "platform/linux/audio/MpvOptions.h"

#include <memory>
#include <mpv/client.h>
#include <mpv/stream_cb.h>

namespace zofra {

/// libmpv, loaded when the first stream is played: it brings so many libraries with it that a program that is
/// only waiting in the status bar should not carry them. Callable from any thread. Never unloaded.
class MpvLibrary {
public:
    /// The library, or why it cannot be used. May take a tenth of a second: not for the main thread.
    [[nodiscard]] static Result<std::shared_ptr<const MpvLibrary>> load(const char* fileName) {
        LateLibrary file(u"libmpv"_qs, fileName);
        auto library = std::make_shared<MpvLibrary>();
        file.require(library->clientApiVersion, "mpv_client_api_version");
        file.require(library->create, "mpv_create");
        file.require(library->initialize, "mpv_initialize");
        file.require(library->terminateDestroy, "mpv_terminate_destroy");
        file.require(library->setOptionString, "mpv_set_option_string");
        file.require(library->observeProperty, "mpv_observe_property");
        file.require(library->setPropertyAsync, "mpv_set_property_async");
        file.require(library->commandAsync, "mpv_command_async");
        file.require(library->setWakeupCallback, "mpv_set_wakeup_callback");
        file.require(library->waitEvent, "mpv_wait_event");
        file.require(library->errorString, "mpv_error_string");
        file.require(library->streamCbAddRo, "mpv_stream_cb_add_ro");
        if (const auto& problem = file.problem())
            return failure(*problem);
        const auto major = library->clientApiVersion() >> 16;
        if (major != MPV_CLIENT_API_VERSION >> 16)
            return failure(u"libmpv cannot be used: its interface has version %1"_qs.arg(major));
        silenceWhatStandsBehind(file);
        return library;
    }
    static constexpr const char* defaultFileName = "libmpv.so.2";

    /// A new mpv with every option of ours. The caller ends it.
    [[nodiscard]] Result<mpv_handle*> start() const {
        mpv_handle* handle = create();
        if (!handle)
            return failure(u"libmpv cannot be started"_qs);
        const auto failed = [&](const QString& what, int error) {
            terminateDestroy(handle);
            return failure(what + u": "_qs + errorText(error));
        };
        for (const auto& [name, value, need] : mpvOptions()) {
            const int result = setOptionString(handle, name, value.constData());
            if (result < 0 && need == MpvOption::Need::required)
                return failed(u"libmpv does not take the option "_qs + QString::fromLatin1(name), result);
        }
        if (const int result = initialize(handle); result < 0)
            return failed(u"libmpv cannot be started"_qs, result);
        return handle;
    }
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

private:
    // NOLINTNEXTLINE(cert-dcl50-cpp): the library wants it like this.
    static void sayNothing(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                           const char* /*format*/, ...) {}
    /// What stands behind mpv writes to standard error. The ALSA library says in ten lines, each time, that
    /// no device can be used, which the engine says in one. The decoders say something of each broken frame
    /// as soon as the first mpv of several has ended, for with it goes what took their words.
    static void silenceWhatStandsBehind(const LateLibrary& file) {
        int (*setHandler)(decltype(&sayNothing)) = nullptr;
        if (file.find(setHandler, "snd_lib_error_set_handler"))
            setHandler(&sayNothing);
        constexpr int quiet = -8;
        void (*setLevel)(int) = nullptr;
        if (file.find(setLevel, "av_log_set_level"))
            setLevel(quiet);
    }
};

} // namespace zofra
