#include "platform/LaunchRequest.h"

#include <algorithm>

namespace platform
{

namespace
{

bool beginsWithScheme(const QString &word)
{
    const QString scheme = word.section(u':', 0, 0);
    const auto isSchemeCharacter = [](QChar character) {
        const ushort code = character.unicode();
        return code < 128 && (character.isLetterOrNumber() || code == '+' || code == '-' || code == '.');
    };
    return scheme.size() > 1 && scheme.size() < word.size() && scheme[0].unicode() < 128 && scheme[0].isLetter() &&
           std::all_of(scheme.begin(), scheme.end(), isSchemeCharacter);
}

} // namespace

QList<LaunchRequest> launchRequests(const QStringList &arguments)
{
    QList<LaunchRequest> requests;
    for (qsizetype index = 0; index < arguments.size(); ++index) {
        const QString &word = arguments[index];
        if (word == QLatin1String("--service-text") && index + 1 < arguments.size())
            requests.append({LaunchRequest::Kind::ServiceText, arguments[++index]});
        else if (!word.startsWith(u'-') && beginsWithScheme(word))
            requests.append({LaunchRequest::Kind::OpenURL, word});
    }
    requests.removeIf([](const LaunchRequest &request) { return request.text.size() > longestLaunchText; });
    return requests.isEmpty() ? QList<LaunchRequest>{LaunchRequest()} : requests;
}

} // namespace platform
