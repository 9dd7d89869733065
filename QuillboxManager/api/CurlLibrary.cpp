#include "api/CurlLibrary.h"

#include "platform/Log.h"

#include <QLibrary>

#include <optional>

using namespace Qt::StringLiterals;

namespace
{

constexpr int soVersion = 4;
constexpr unsigned oldestVersion = 0x075700; // the latest option in use came with 7.87.0

/// Looks functions up; remembers whether any was missing.
class Lookup
{
public:
    explicit Lookup(QLibrary &theLibrary) : library(theLibrary) {}

    template <class Function> Lookup &operator()(Function &function, const char *name)
    {
        function = reinterpret_cast<Function>(library.resolve(name));
        complete = complete && function;
        return *this;
    }
    bool foundAll() const { return complete; }

private:
    QLibrary &library;
    bool complete = true;
};

bool findFunctions(QLibrary &library, CurlLibrary &curl)
{
    Lookup find(library);
    find(curl.versionInfo, "curl_version_info")(curl.globalInit, "curl_global_init");
    find(curl.easyInit, "curl_easy_init")(curl.easyCleanup, "curl_easy_cleanup");
    find(curl.easySetopt, "curl_easy_setopt")(curl.easyGetinfo, "curl_easy_getinfo");
    find(curl.easyHeader, "curl_easy_header");
    find(curl.multiInit, "curl_multi_init")(curl.multiCleanup, "curl_multi_cleanup");
    find(curl.multiSetopt, "curl_multi_setopt")(curl.multiAddHandle, "curl_multi_add_handle");
    find(curl.multiRemoveHandle, "curl_multi_remove_handle")(curl.multiPerform, "curl_multi_perform");
    find(curl.multiPoll, "curl_multi_poll")(curl.multiWakeup, "curl_multi_wakeup");
    find(curl.multiInfoRead, "curl_multi_info_read");
    find(curl.shareInit, "curl_share_init")(curl.shareSetopt, "curl_share_setopt");
    find(curl.shareCleanup, "curl_share_cleanup");
    find(curl.listAppend, "curl_slist_append")(curl.listFreeAll, "curl_slist_free_all");
    return find.foundAll();
}

std::optional<CurlLibrary> load()
{
    QLibrary library(QStringLiteral("curl"), soVersion);
    CurlLibrary curl{};
    if (!library.load()) {
        platform::log(u"libcurl cannot be loaded: "_s + library.errorString());
        return std::nullopt;
    }
    if (!findFunctions(library, curl) || curl.versionInfo(CURLVERSION_NOW)->version_num < oldestVersion) {
        platform::log(u"libcurl is older than 7.87.0"_s);
        return std::nullopt;
    }
    if (curl.globalInit(CURL_GLOBAL_ALL) != CURLE_OK) {
        platform::log(u"libcurl cannot be initialised"_s);
        return std::nullopt;
    }
    return curl;
}

} // namespace

const CurlLibrary *CurlLibrary::shared()
{
    static const std::optional<CurlLibrary> curl = load();
    return curl ? &*curl : nullptr;
}
