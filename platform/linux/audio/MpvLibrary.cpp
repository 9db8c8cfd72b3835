// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvLibrary.h"

#include "platform/linux/audio/MpvOptions.h"

#include <dlfcn.h>

namespace zofra {

namespace {

// NOLINTNEXTLINE(cert-dcl50-cpp): the library wants it like this.
void sayNothing(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                const char* /*format*/, ...) {}

/// What stands behind mpv writes to standard error. The ALSA library says in ten lines, each time, that no
/// device can be used, which the engine says in one. The decoders say something of each broken frame as soon
/// as the first mpv of several has ended, for with it goes what took their words.
void silenceWhatStandsBehind(void* handle) {
    using Handler =
        void (*)(const char* file, int line, const char* function, int error, const char* format, ...);
    if (auto* const set = reinterpret_cast<int (*)(Handler)>(::dlsym(handle, "snd_lib_error_set_handler")))
        set(&sayNothing);
    constexpr int quiet = -8;
    if (auto* const set = reinterpret_cast<void (*)(int)>(::dlsym(handle, "av_log_set_level")))
        set(quiet);
}

} // namespace

Result<std::shared_ptr<const MpvLibrary>> MpvLibrary::load(const char* fileName) {
    // Lazily: of the thousands of functions behind it, a radio needs few.
    void* handle = ::dlopen(fileName, RTLD_LAZY | RTLD_LOCAL);
    if (!handle) {
        const char* reason = ::dlerror();
        return failure(u"libmpv cannot be loaded: %1"_qs.arg(reason ? QString::fromLocal8Bit(reason)
                                                                    : QString::fromLatin1(fileName)));
    }
    auto library = std::make_shared<MpvLibrary>();
    QString missing;
    const auto find = [&]<typename Function>(Function& function, const char* name) {
        function = reinterpret_cast<Function>(::dlsym(handle, name));
        if (!function && missing.isEmpty())
            missing = QString::fromLatin1(name);
    };
    find(library->clientApiVersion, "mpv_client_api_version");
    find(library->create, "mpv_create");
    find(library->initialize, "mpv_initialize");
    find(library->terminateDestroy, "mpv_terminate_destroy");
    find(library->setOptionString, "mpv_set_option_string");
    find(library->observeProperty, "mpv_observe_property");
    find(library->setPropertyAsync, "mpv_set_property_async");
    find(library->commandAsync, "mpv_command_async");
    find(library->setWakeupCallback, "mpv_set_wakeup_callback");
    find(library->waitEvent, "mpv_wait_event");
    find(library->errorString, "mpv_error_string");
    find(library->streamCbAddRo, "mpv_stream_cb_add_ro");
    if (!missing.isEmpty())
        return failure(u"libmpv cannot be used: it has no %1"_qs.arg(missing));
    const auto major = library->clientApiVersion() >> 16;
    if (major != MPV_CLIENT_API_VERSION >> 16)
        return failure(u"libmpv cannot be used: its interface has version %1"_qs.arg(major));
    silenceWhatStandsBehind(handle);
    return library;
}

Result<mpv_handle*> MpvLibrary::start() const {
    mpv_handle* handle = create();
    if (!handle)
        return failure(u"libmpv cannot be started"_qs);
    const auto failed = [&](const QString& what, int error) {
        terminateDestroy(handle);
        return failure(what + u": "_qs + errorText(error));
    };
    for (const auto& option : mpvOptions()) {
        const int result = setOptionString(handle, option.name, option.value.constData());
        if (result < 0 && option.need == MpvOption::Need::required)
            return failed(u"libmpv does not take the option "_qs + QString::fromLatin1(option.name), result);
    }
    if (const int result = initialize(handle); result < 0)
        return failed(u"libmpv cannot be started"_qs, result);
    return handle;
}

} // namespace zofra
