// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/audio/FakeMpv.h"

#include <cmath>

using zofra::test::FakeMpvControl;

namespace {

FakeMpvControl* control = nullptr;

FakeMpvControl::Instance* instanceOf(mpv_handle* handle) {
    return reinterpret_cast<FakeMpvControl::Instance*>(handle);
}

void record(const std::string& call) {
    control->calls.push_back(call);
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) void fake_mpv_set_control(FakeMpvControl* value) {
    control = value;
}

MPV_EXPORT unsigned long mpv_client_api_version(void) {
    const std::scoped_lock lock(control->mutex);
    return control->apiVersion;
}

MPV_EXPORT mpv_handle* mpv_create(void) {
    const std::scoped_lock lock(control->mutex);
    if (control->failsToCreate)
        return nullptr;
    control->instances.push_back(std::make_unique<FakeMpvControl::Instance>());
    return reinterpret_cast<mpv_handle*>(control->instances.back().get());
}

MPV_EXPORT int mpv_set_option_string(mpv_handle*, const char* name, const char* data) {
    const std::scoped_lock lock(control->mutex);
    if (name == control->refusedOption)
        return MPV_ERROR_OPTION_NOT_FOUND;
    control->options[name] = data;
    return 0;
}

MPV_EXPORT int mpv_initialize(mpv_handle* handle) {
    const std::scoped_lock lock(control->mutex);
    instanceOf(handle)->isInitialized = control->initializeResult == 0;
    return control->initializeResult;
}

MPV_EXPORT void mpv_terminate_destroy(mpv_handle* handle) {
    std::unique_lock lock(control->mutex);
    control->changed.wait(lock, [] { return !control->holdsEnding; });
    instanceOf(handle)->isEnded = true;
    control->changed.notify_all();
}

MPV_EXPORT int mpv_observe_property(mpv_handle*, uint64_t, const char*, mpv_format) {
    return 0;
}

MPV_EXPORT int mpv_set_property_async(mpv_handle*, uint64_t, const char* name, mpv_format format,
                                      void* data) {
    const std::scoped_lock lock(control->mutex);
    if (format == MPV_FORMAT_STRING) {
        record(std::string("set ") + name + " " + *static_cast<char**>(data));
        return 0;
    }
    const double value = format == MPV_FORMAT_FLAG ? *static_cast<int*>(data) : *static_cast<double*>(data);
    record(std::string("set ") + name + " " + std::to_string(std::lround(value)));
    return 0;
}

MPV_EXPORT int mpv_command_async(mpv_handle* handle, uint64_t id, const char** args) {
    const std::scoped_lock lock(control->mutex);
    std::string call;
    for (const char** word = args; *word; ++word)
        call += (call.empty() ? "" : " ") + std::string(*word);
    record(call);
    instanceOf(handle)->lastCommandId = id;
    return 0;
}

MPV_EXPORT void mpv_set_wakeup_callback(mpv_handle* handle, void (*callback)(void*), void* data) {
    const std::scoped_lock lock(control->mutex);
    instanceOf(handle)->wakeup = callback;
    instanceOf(handle)->wakeupData = data;
    // As mpv does, for events that are there already.
    if (callback)
        callback(data);
}

MPV_EXPORT mpv_event* mpv_wait_event(mpv_handle* handle, double timeout) {
    static mpv_event none{};
    const std::scoped_lock lock(control->mutex);
    if (timeout != 0.0)
        record("waited");
    auto& instance = *instanceOf(handle);
    instance.handedOut.reset();
    if (instance.events.empty())
        return &none;
    instance.handedOut = std::move(instance.events.front());
    instance.events.pop_front();
    return &instance.handedOut->event;
}

MPV_EXPORT int mpv_stream_cb_add_ro(mpv_handle*, const char* protocol, void*, mpv_stream_cb_open_ro_fn) {
    const std::scoped_lock lock(control->mutex);
    control->protocols.emplace_back(protocol);
    return control->addProtocolResult;
}

MPV_EXPORT const char* mpv_error_string(int error) {
    return error == MPV_ERROR_OPTION_NOT_FOUND ? "option not found" : "something else";
}
}
