#pragma once

#include <curl/curl.h>

/// The functions of libcurl, which is fetched with the first exchange instead of with the program: the thirty libraries
/// that come along would take a sixth of the time until the first window.
struct CurlLibrary {
    /// Loads it at the first call, which takes some milliseconds and is for a background thread; it stays loaded. Any
    /// thread. Null when this system has none that fits; the log says why, once.
    static const CurlLibrary *shared();

    decltype(&curl_version_info) versionInfo;
    decltype(&curl_global_init) globalInit;
    decltype(&curl_easy_init) easyInit;
    decltype(&curl_easy_cleanup) easyCleanup;
    decltype(&curl_easy_setopt) easySetopt;
    decltype(&curl_easy_getinfo) easyGetinfo;
    decltype(&curl_easy_header) easyHeader;
    decltype(&curl_multi_init) multiInit;
    decltype(&curl_multi_cleanup) multiCleanup;
    decltype(&curl_multi_setopt) multiSetopt;
    decltype(&curl_multi_add_handle) multiAddHandle;
    decltype(&curl_multi_remove_handle) multiRemoveHandle;
    decltype(&curl_multi_perform) multiPerform;
    decltype(&curl_multi_poll) multiPoll;
    decltype(&curl_multi_wakeup) multiWakeup;
    decltype(&curl_multi_info_read) multiInfoRead;
    decltype(&curl_share_init) shareInit;
    decltype(&curl_share_setopt) shareSetopt;
    decltype(&curl_share_cleanup) shareCleanup;
    decltype(&curl_slist_append) listAppend;
    decltype(&curl_slist_free_all) listFreeAll;
};
