// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/LateLibrary.h"

#include <QString>

#include <curl/curl.h>
#include <optional>

namespace zofra {

/// libcurl, loaded by the first thread that makes a request: with the twenty-six libraries behind it, it
/// takes as long to load as all the others that the program starts with. Any thread but the main one.
class CurlLibrary {
public:
    explicit CurlLibrary(const char* fileName) {
        LateLibrary library(u"libcurl"_qs, fileName);
        library.require(globalInit, "curl_global_init");
        library.require(versionInfo, "curl_version_info");
        library.require(easyInit, "curl_easy_init");
        library.require(easyCleanup, "curl_easy_cleanup");
        library.require(easySetopt, "curl_easy_setopt");
        library.require(easyGetinfo, "curl_easy_getinfo");
        library.require(easyPerform, "curl_easy_perform");
        library.require(easyPause, "curl_easy_pause");
        library.require(easySend, "curl_easy_send");
        library.require(easyRecv, "curl_easy_recv");
        library.require(easyStrerror, "curl_easy_strerror");
        library.require(multiInit, "curl_multi_init");
        library.require(multiCleanup, "curl_multi_cleanup");
        library.require(multiSetopt, "curl_multi_setopt");
        library.require(multiAddHandle, "curl_multi_add_handle");
        library.require(multiRemoveHandle, "curl_multi_remove_handle");
        library.require(multiPerform, "curl_multi_perform");
        library.require(multiPoll, "curl_multi_poll");
        library.require(multiWakeup, "curl_multi_wakeup");
        library.require(multiInfoRead, "curl_multi_info_read");
        library.require(shareInit, "curl_share_init");
        library.require(shareSetopt, "curl_share_setopt");
        library.require(slistAppend, "curl_slist_append");
        library.require(slistFreeAll, "curl_slist_free_all");
        problem = library.problem();
        if (!problem)
            return;
        easyInit = +[]() -> CURL* { return nullptr; };
        multiInit = +[]() -> CURLM* { return nullptr; };
    }

    /// Why it cannot be used, if so. Then `easyInit` and `multiInit` give nothing, and nothing else may be
    /// called.
    std::optional<QString> problem;

    decltype(&::curl_global_init) globalInit = nullptr;
    decltype(&::curl_version_info) versionInfo = nullptr;
    decltype(&::curl_easy_init) easyInit = nullptr;
    decltype(&::curl_easy_cleanup) easyCleanup = nullptr;
    decltype(&::curl_easy_setopt) easySetopt = nullptr;
    decltype(&::curl_easy_getinfo) easyGetinfo = nullptr;
    decltype(&::curl_easy_perform) easyPerform = nullptr;
    decltype(&::curl_easy_pause) easyPause = nullptr;
    decltype(&::curl_easy_send) easySend = nullptr;
    decltype(&::curl_easy_recv) easyRecv = nullptr;
    decltype(&::curl_easy_strerror) easyStrerror = nullptr;
    decltype(&::curl_multi_init) multiInit = nullptr;
    decltype(&::curl_multi_cleanup) multiCleanup = nullptr;
    decltype(&::curl_multi_setopt) multiSetopt = nullptr;
    decltype(&::curl_multi_add_handle) multiAddHandle = nullptr;
    decltype(&::curl_multi_remove_handle) multiRemoveHandle = nullptr;
    decltype(&::curl_multi_perform) multiPerform = nullptr;
    decltype(&::curl_multi_poll) multiPoll = nullptr;
    decltype(&::curl_multi_wakeup) multiWakeup = nullptr;
    decltype(&::curl_multi_info_read) multiInfoRead = nullptr;
    decltype(&::curl_share_init) shareInit = nullptr;
    decltype(&::curl_share_setopt) shareSetopt = nullptr;
    decltype(&::curl_slist_append) slistAppend = nullptr;
    decltype(&::curl_slist_free_all) slistFreeAll = nullptr;
};

/// The one of the process; the first call loads it. Never destroyed, for threads may come to it until the
/// very end.
[[nodiscard]] inline const CurlLibrary& curl() {
    static const auto* const library = new CurlLibrary("libcurl.so.4");
    return *library;
}

} // namespace zofra
