#include "Page.h"

#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr const char *frame = R"(<!DOCTYPE html>
<html lang="%1"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width, initial-scale=1">
<title>%2</title><style>
body { margin: 0 auto; max-width: 640px; padding: 32px 24px; background: #fff; color: #262626;
  font: 14px/24px "Noto Sans CJK SC", "PingFang SC", "Helvetica Neue", sans-serif; }
h1 { font-size: 24px; line-height: 32px; font-weight: 500; margin: 0 0 24px; }
h2 { font-size: 16px; margin: 24px 0 8px; }
label { display: block; margin: 16px 0 4px; }
input { box-sizing: border-box; width: 100%; height: 40px; padding: 0 12px; font: inherit; border-radius: 3px;
  border: 1px solid rgba(0, 0, 0, 0.42); }
input:focus { outline: none; border-color: #dd3333; box-shadow: 0 0 0 1px #dd3333; }
button { width: 100%; height: 40px; margin-top: 24px; font: inherit; color: #fff; background: #dd3333; border: 0;
  border-radius: 3px; cursor: pointer; }
button:focus-visible { outline: 2px solid #dd3333; outline-offset: 2px; }
.error { color: #b3261e; min-height: 24px; }
main { max-width: 560px; } form { max-width: 320px; }
</style></head><body><main><h1>%2</h1>%3</main>%4</body></html>
)";

PageLanguage languageNamed(const QString &name)
{
    if (name.startsWith("zh-tw"_L1) || name.startsWith("zh-hk"_L1) || name.startsWith("zh-hant"_L1))
        return PageLanguage::Traditional;
    return name.startsWith("zh"_L1) ? PageLanguage::Simplified : PageLanguage::English;
}
} // namespace

PageLanguage languageOf(const PageRequest &request)
{
    const QUrlQuery items(QString::fromUtf8(request.query));
    const QString wanted = items.queryItemValue(u"lang"_s);
    const QString preferred = QString::fromLatin1(request.languages).section(u',', 0, 0).trimmed();
    return languageNamed((wanted.isEmpty() ? preferred : wanted).toLower());
}

QString PageText::in(PageLanguage language) const
{
    if (language == PageLanguage::English)
        return QString::fromUtf8(english);
    return QString::fromUtf8(language == PageLanguage::Simplified ? simplified : traditional);
}

Reply pageWith(PageLanguage language, const QString &title, const QString &body, const QString &script)
{
    const QString code = PageText{"zh-CN", "zh-TW", "en"}.in(language);
    const QString ending = script.isEmpty() ? QString() : "<script>"_L1 + script + "</script>"_L1;
    Reply reply;
    reply.body = QString::fromUtf8(frame).arg(code, title.toHtmlEscaped(), body, ending).toUtf8();
    reply.type = "text/html; charset=utf-8";
    reply.headers = {{"Content-Security-Policy",
                      "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; connect-src 'self'; "
                      "form-action 'self'"},
                     {"Cache-Control", "no-store"}};
    return reply;
}

Reply redirectTo(const QByteArray &location)
{
    Reply reply;
    reply.status = 302;
    reply.type = "text/plain";
    reply.headers = {{"Location", location}, {"Cache-Control", "no-store"}};
    return reply;
}

} // namespace documentserver
