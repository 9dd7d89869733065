#include "SignOnPages.h"

#include "../Services.h"

#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr PageText title{"统一身份认证", "統一身分驗證", "Sign in with your organization"};
constexpr PageText accountLabel{"帐号", "帳號", "Account"};
constexpr PageText passwordLabel{"密码", "密碼", "Password"};
constexpr PageText button{"登录", "登入", "Sign in"};
constexpr PageText wrong{"帐号或密码不正确。", "帳號或密碼不正確。", "The account or the password is incorrect."};
constexpr PageText locked{"帐号已被锁定，请稍后再试。", "帳號已被鎖定，請稍後再試。",
                          "The account is locked. Try again later."};
constexpr PageText done{"您已登录，可以关闭此窗口。", "您已登入，可以關閉此視窗。",
                        "You are signed in. You may close this window."};

constexpr const char *formBody = R"(<form method="post" id="form">
<div class="error" id="error" role="alert">%1</div>
<label for="username">%2</label><input id="username" name="username" autocomplete="username" value="%3" autofocus>
<label for="password">%4</label><input id="password" name="password" type="password" autocomplete="current-password">
<button id="signin">%5</button></form>)";

/// Signs in without leaving the page, and shows the ticket as its place.
constexpr const char *sameDocumentScript = R"(
document.getElementById("form").addEventListener("submit", async (event) => {
  event.preventDefault();
  const fields = new URLSearchParams(new FormData(event.target));
  const reply = await fetch("/sso/script-ticket", { method: "POST", body: fields });
  const text = await reply.text();
  if (!reply.ok) {
    document.getElementById("error").textContent = text;
    return;
  }
  history.replaceState(null, "", "/sso/script");
  location.hash = "/?ticket=" + text;
});
)";

constexpr qsizetype largeTicket = 100 * 1024;
constexpr int hops = 4;

/// Values of forms have "+" for blanks.
QString valueOf(const QByteArray &fields, const QString &name)
{
    const QUrlQuery items(QString::fromUtf8(QByteArray(fields).replace('+', "%20")));
    return items.queryItemValue(name, QUrl::FullyDecoded);
}

QByteArray home(const QByteArray &ticket)
{
    return "/sso/home#/?ticket=" + ticket;
}

/// Where the browser goes with a fresh ticket.
QByteArray wayBack(const QString &style, const QByteArray &ticket)
{
    if (style == "match"_L1)
        return "/sso/return?state=done&ticket=" + ticket + "#";
    if (style == "hops"_L1)
        return "/sso/hop?left=" + QByteArray::number(hops) + "&key=" + ticket;
    if (style == "twice"_L1)
        return "/sso/again/" + ticket + "#/?ticket=" + ticket;
    if (style == "large"_L1)
        return home("ST-" + QByteArray(largeTicket, 'x'));
    return home(ticket);
}

Reply nextHop(const PageRequest &request)
{
    const int left = valueOf(request.query, u"left"_s).toInt() - 1;
    const QByteArray ticket = valueOf(request.query, u"key"_s).toUtf8().toPercentEncoding();
    if (left <= 0 || left >= hops)
        return redirectTo(home(ticket));
    return redirectTo("/sso/hop?left=" + QByteArray::number(left) + "&key=" + ticket);
}

Reply nextTurn(const PageRequest &request)
{
    const int turn = valueOf(request.query, u"turn"_s).toInt();
    return redirectTo("/sso/loop?turn=" + QByteArray::number(turn + 1));
}

bool isStyle(const QString &place)
{
    return QStringList{u"hash"_s, u"match"_s, u"hops"_s, u"script"_s, u"twice"_s, u"large"_s}.contains(place);
}
} // namespace

Reply SignOnPages::form(const QString &style, const PageRequest &request, const QString &error) const
{
    const PageLanguage language = languageOf(request);
    const QString account = valueOf(request.form, u"username"_s);
    const QString body =
        QString::fromUtf8(formBody).arg(error.toHtmlEscaped(), accountLabel.in(language), account.toHtmlEscaped(),
                                        passwordLabel.in(language), button.in(language));
    return pageWith(language, title.in(language), body,
                    style == "script"_L1 ? QString::fromUtf8(sameDocumentScript) : QString());
}

Reply SignOnPages::signIn(const QString &style, const PageRequest &request)
{
    const bool inScript = style == "script-ticket"_L1;
    const ScenarioPointer scenario = services.scenario.current();
    const QString account = valueOf(request.form, u"username"_s).left(longestAccountName);
    try {
        const auto gate = services.credentials.gate(account);
        const QByteArray password = valueOf(request.form, u"password"_s).toUtf8();
        services.credentials.requirePlain(account, password, *scenario);
        services.credentials.succeeded(account);
    } catch (const ApiError &error) {
        const QString text = (error.code == AccountLocked ? locked : wrong).in(languageOf(request));
        if (inScript)
            return {401, text.toUtf8(), "text/plain; charset=utf-8"};
        return form(style, request, text);
    }
    const QByteArray ticket = services.tickets.make(account).toLatin1();
    return inScript ? Reply{200, ticket, "text/plain"} : redirectTo(wayBack(style, ticket));
}

Reply SignOnPages::answer(const QString &place, const PageRequest &request)
{
    const PageLanguage language = languageOf(request);
    const bool isOn = services.scenario.current()->value("thirdauth").isObject();
    if (isOn && request.isPost && (isStyle(place) || place == "script-ticket"_L1))
        return signIn(place, request);
    if (!isOn || request.isPost)
        return replyFor(ApiError{UnknownMethod, {}, {}, {}});
    if (isStyle(place))
        return form(place, request, {});
    if (place == "home"_L1 || place == "return"_L1)
        return pageWith(language, title.in(language), u"<p>%1</p>"_s.arg(done.in(language)));
    if (place == "hop"_L1)
        return nextHop(request);
    if (place == "loop"_L1)
        return nextTurn(request);
    if (place.startsWith("again/"_L1))
        return redirectTo(home(place.mid(6).toUtf8().toPercentEncoding()));
    if (place != "endless"_L1)
        return replyFor(ApiError{UnknownMethod, {}, {}, {}});
    Reply endless = pageWith(language, title.in(language), {});
    endless.neverEnds = true;
    return endless;
}

} // namespace documentserver
